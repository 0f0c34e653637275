#pragma once

#include "ftplogin.h"

#include <QDialog>

class QCheckBox;
class QLineEdit;

// The FTP login dialog `ftplogin`: user, password and whether to keep them in the list.
class FtpLoginDialog final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FtpLoginDialog)

public:
    explicit FtpLoginDialog(QWidget *parent = nullptr);

    void setCredentials(const FtpCredentials &credentials);
    FtpCredentials credentials() const;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QLineEdit *m_username;
    QLineEdit *m_password;
    QCheckBox *m_remember;
};
