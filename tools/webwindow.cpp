#include "webwindow.h"

#include "webpage.h"

#include <QLabel>
#include <QStatusBar>
#include <QVBoxLayout>
#include <QWebEngineDownloadRequest>
#include <QWebEngineProfile>
#include <QWebEngineView>

WebWindow::WebWindow(WebNavigation::AddDownload añadir, Notifier &notifier, Desktop &desktop,
                     const QUrl &home, QWidget *parent)
    : QWidget(parent), m_navigation(std::move(añadir), notifier, desktop), m_desktop(desktop),
      m_home(home), m_layout(new QVBoxLayout(this)), m_estado(new QStatusBar(this)),
      m_status(new QLabel(m_estado))
{
    setObjectName(QStringLiteral("web"));
    setWindowTitle(QStringLiteral("Navegador web"));
    m_estado->setObjectName(QStringLiteral("estado"));
    m_estado->setAccessibleName(QStringLiteral("Estado"));
    m_estado->setSizeGripEnabled(false);
    m_status->setTextFormat(Qt::PlainText);
    m_status->setContentsMargins(4, 1, 4, 1);
    m_estado->addWidget(m_status, 1);
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->setSpacing(0);
    m_layout->addStretch(1);
    m_layout->addWidget(m_estado);
}

// Room for a page, before the page is there.
QSize WebWindow::sizeHint() const
{
    return {640, 480};
}

void WebWindow::showEvent(QShowEvent *event)
{
    if (!m_explorador)
        open();
    QWidget::showEvent(event);
}

void WebWindow::open()
{
    m_explorador = new QWebEngineView(this);
    m_explorador->setObjectName(QStringLiteral("explorador"));
    m_explorador->setAccessibleName(QStringLiteral("Página web"));
    auto *page = new WebPage(m_navigation, m_desktop, m_explorador);
    m_explorador->setPage(page);
    // The page takes the place of the stretch that kept the status bar down until now.
    delete m_layout->takeAt(0);
    m_layout->insertWidget(0, m_explorador, 1);
    setFocusProxy(m_explorador);

    connect(page, &QWebEnginePage::linkHovered, this, &WebWindow::showHoveredLink);
    // A file the page cannot show is a download, and downloads are this program's job.
    connect(page->profile(), &QWebEngineProfile::downloadRequested, this,
            [this](QWebEngineDownloadRequest *request) {
                const QString address = request->url().toString();
                request->cancel();
                m_navigation.addDownload(address);
            });
    connect(page, &QWebEnginePage::loadStarted, this,
            [this] { showLoad(QStringLiteral("Abriendo la página...")); });
    connect(page, &QWebEnginePage::loadProgress, this, [this](int percent) {
        showLoad(QStringLiteral("Abriendo la página... %1%").arg(percent));
    });
    connect(page, &QWebEnginePage::loadFinished, this,
            [this] { showLoad(QStringLiteral("Listo")); });

    m_explorador->load(m_home);
    m_navigation.setSilent(true);
}

void WebWindow::showLoad(const QString &text)
{
    m_loadText = text;
    if (m_hoveredLink.isEmpty())
        m_status->setText(text);
}

void WebWindow::showHoveredLink(const QString &url)
{
    m_hoveredLink = url;
    m_status->setText(url.isEmpty() ? m_loadText : url);
}
