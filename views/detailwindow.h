#pragma once

#include "detailmodel.h"

#include <QTimer>
#include <QWidget>

class QCheckBox;
class QLabel;
class QLineEdit;
class Tarta;

// The detail window `detallado`: one window for both lists, filled again on every request and
// refreshed every second while it is open.
class DetailWindow final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(DetailWindow)

public:
    explicit DetailWindow(QWidget *parent = nullptr);

    // Shows the download `source` reads, bringing the window to the front.
    void describe(DetailModel::Source source);
    DetailModel &model() { return m_model; }

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    QLineEdit *field(const char *name);
    void showInfo();

    DetailModel m_model;
    QTimer m_refresh;
    QLineEdit *m_url;
    QLineEdit *m_destino;
    QLineEdit *m_totalsize;
    QLineEdit *m_actsize;
    QLineEdit *m_tiempo;
    QLineEdit *m_estado;
    QLabel *m_downloaded;
    QLabel *m_conexiones;
    QCheckBox *m_allowredo;
    Tarta *m_tarta;
};
