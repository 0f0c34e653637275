#pragma once

#include "webnavigation.h"

#include <QUrl>
#include <QWidget>

class QLabel;
class QStatusBar;
class QVBoxLayout;
class QWebEngineView;

// The browser window `web`: the page `explorador` above the status bar `estado`. It is made
// hidden at start-up; the web engine is started the first time the window is shown, so a run
// that never shows it pays nothing for it.
class WebWindow final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(WebWindow)

public:
    WebWindow(WebNavigation::AddDownload añadir, Notifier &notifier, Desktop &desktop,
              const QUrl &home, QWidget *parent = nullptr);

    // Null until the window is first shown.
    QWebEngineView *explorador() const { return m_explorador; }
    QSize sizeHint() const override;

protected:
    void showEvent(QShowEvent *event) override;

private:
    void open();
    void showLoad(const QString &text);
    void showHoveredLink(const QString &url);

    WebNavigation m_navigation;
    Desktop &m_desktop;
    QUrl m_home;
    QVBoxLayout *m_layout;
    QStatusBar *m_estado;
    QLabel *m_status;
    QWebEngineView *m_explorador = nullptr;
    // The status text shows the link under the pointer, else what the page is doing.
    QString m_hoveredLink;
    QString m_loadText;
};
