#include "webnavigation.h"

#include "desktop.h"
#include "notifier.h"

namespace {

const QString Title = QStringLiteral("Navegador web");
const QString DownloadPrefix = QStringLiteral("zelq:");
const QString MailPrefix = QStringLiteral("mailto:");
const QString OutsidePrefix = QStringLiteral("newwin:");

} // namespace

WebNavigation::WebNavigation(AddDownload añadir, Notifier &notifier, Desktop &desktop)
    : m_añadir(std::move(añadir)), m_notifier(notifier), m_desktop(desktop)
{}

bool WebNavigation::beforeNavigate(const QString &url)
{
    m_silent = true;
    if (url.startsWith(DownloadPrefix)) {
        addDownload(url.mid(DownloadPrefix.size()));
        return false;
    }
    if (url.startsWith(MailPrefix)) {
        // The mail program may ask things of its own. The address goes to it through the
        // desktop, so the web engine must not hand it over a second time.
        m_silent = false;
        m_desktop.openUrl(url);
        return false;
    }
    if (url.startsWith(OutsidePrefix)) {
        m_desktop.openUrl(url.mid(OutsidePrefix.size()));
        return false;
    }
    return true;
}

void WebNavigation::addDownload(const QString &address)
{
    // A refused address has had its message; announcing it as added would be false.
    if (!m_añadir(address))
        return;
    m_notifier.playSound(QStringLiteral("ding.wav"));
    m_notifier.message(QStringLiteral("Se ha añadido ") + address + QStringLiteral(" a la lista."),
                       QStringLiteral("download.gif"));
}

void WebNavigation::alert(const QString &text)
{
    if (!m_silent)
        m_desktop.messageBox(text, Desktop::Icon::Exclamation, Title);
}

bool WebNavigation::confirm(const QString &text)
{
    return !m_silent && m_desktop.askYesNo(text);
}

std::optional<QString> WebNavigation::prompt(const QString &text, const QString &initial)
{
    if (m_silent)
        return std::nullopt;
    return m_desktop.inputBox(text, initial, Title);
}

bool WebNavigation::acceptCertificate(const QString &host, const QString &problem)
{
    return !m_silent &&
           m_desktop.askYesNo(QStringLiteral("El certificado de seguridad de ") + host +
                              QStringLiteral(" no es válido (") + problem +
                              QStringLiteral("). ¿Desea abrir la página de todos modos?"));
}
