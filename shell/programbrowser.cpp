// What comes from the person's own web browser: the extension's links and copied addresses.
#include "clipboardwatch.h"
#include "linkgrabberwindow.h"
#include "mainwindow.h"
#include "program.h"
#include "systemtray.h"

#include <QComboBox>
#include <QGuiApplication>
#include <QTimer>

void Program::fromBrowser(const QList<BrowserLink> &links)
{
    // Links that come while the splash is up wait for the main window.
    if (!m_main) {
        m_browserLinks += links;
        return;
    }
    if (links.isEmpty())
        return;
    m_tray->showMainWindow();
    for (const BrowserLink &link : links) {
        if (link.kind == BrowserLink::Kind::Grab)
            grabPage(link.url);
        else
            m_core.quickAdd().add(link.url, {.referer = link.referrer, .cookie = link.cookie});
    }
}

void Program::grabPage(const QString &url)
{
    const auto fetch = [this, url] {
        LinkGrabber &grabber = m_listado->model();
        grabber.unload();
        grabber.setDirecc(url);
        grabber.obtener();
    };
    if (m_listado && m_listado->isVisible()) {
        fetch();
        m_listado->raise();
        m_listado->activateWindow();
        return;
    }
    // Showing the window opens it afresh, so the page goes in once it is up.
    QTimer::singleShot(0, this, fetch);
    showListado();
}

void Program::wireBrowser()
{
    m_clipboard = new ClipboardWatch(
        QGuiApplication::clipboard(), m_folder,
        [this] { return m_core.settings().extra().portapapeles; }, this);
    connect(m_clipboard, &ClipboardWatch::offered, this, &Program::offerCopied);
}

void Program::offerCopied(const QString &url)
{
    // Offered where the person will look, without taking the focus from what they are doing.
    const QString text = QStringLiteral("Dirección copiada: ") + url +
                         QStringLiteral(". Pulse Añadir para descargarla.");
    m_main->quickadd()->setEditText(url);
    m_main->setPanelText(StatusPanel::Mensajes, text);
    m_tray->showMessage(text);
}
