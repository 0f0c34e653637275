#pragma once

#include "linkgrabber.h"

#include <QDialog>
#include <QTimer>
#include <utility>
#include <vector>

class QLineEdit;
class QListView;
class QPushButton;
class QRadioButton;

// The link grabber window `listado`. Each showing opens it afresh (the destination from the
// settings, the saved endings, the clipboard's address); closing it stops a fetch under way.
// The main window shows it with exec() from its toolbar button "listado".
class LinkGrabberWindow final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LinkGrabberWindow)

public:
    LinkGrabberWindow(ActiveList &active, InactiveList &inactive, const Settings &settings,
                      Desktop &desktop, const ProgramFolder &folder, QWidget *parent = nullptr);

    LinkGrabber &model() { return m_model; }

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QLayout *addressRow();
    QLayout *listsRow();
    QLayout *endingsRow();
    QLayout *destinationRow();
    QRadioButton *option(const char *name, const QString &text, LinkGrabber::Extract extract);
    void modelChanged();
    void refresh();

    LinkGrabber m_model;
    // While addresses pour in, the window catches up a few times a second only.
    QTimer m_refresh;
    QLineEdit *m_direcc = nullptr;
    QPushButton *m_obtener = nullptr;
    std::vector<std::pair<QRadioButton *, LinkGrabber::Extract>> m_options;
    QListView *m_si = nullptr;
    QListView *m_no = nullptr;
    QListView *m_ext = nullptr;
    QLineEdit *m_destdir = nullptr;
};
