#include "webpage.h"

#include "browserstartup.h"
#include "desktop.h"
#include "webnavigation.h"

#include <QWebEngineCertificateError>
#include <QWebEngineProfile>
#include <QWebEngineScript>
#include <QWebEngineScriptCollection>
#include <QWebEngineUrlRequestJob>
#include <QWebEngineUrlSchemeHandler>

namespace {

// The check compares "zelq:" in exact case, but the web engine lowercases a link's scheme before
// the program sees the address. So a link that writes it in another case is stopped in the page
// and its own text handed to the program through the console, marked with a \1.
const QString LinkScriptName = QStringLiteral("corvane-links");
const char LinkScript[] = R"(
addEventListener('click', function (event) {
    var link = event.target instanceof Element ? event.target.closest('a[href], area[href]') : null;
    if (!link)
        return;
    var written = link.getAttribute('href').trim();
    if (/^zelq:/i.test(written) && !written.startsWith('zelq:')) {
        event.preventDefault();
        console.log('\u0001' + written);
    }
}, true);
)";

// A taken scheme that is followed all the same (a "ZELQ:" link) has no page to show.
class NoPage final : public QWebEngineUrlSchemeHandler
{
    Q_DISABLE_COPY_MOVE(NoPage)

public:
    using QWebEngineUrlSchemeHandler::QWebEngineUrlSchemeHandler;
    void requestStarted(QWebEngineUrlRequestJob *job) override
    {
        job->fail(QWebEngineUrlRequestJob::UrlNotFound);
    }
};

} // namespace

WebPage::WebPage(WebNavigation &navigation, Desktop &desktop, QObject *parent)
    : QWebEnginePage(parent), m_navigation(navigation), m_desktop(desktop)
{
    // Without a handler the engine blocks a taken scheme before the check sees it.
    QWebEngineProfile *engine = profile();
    for (const QByteArray &scheme : takenSchemes()) {
        if (!engine->urlSchemeHandler(scheme))
            engine->installUrlSchemeHandler(scheme, new NoPage(engine));
    }
    QWebEngineScript script;
    script.setName(LinkScriptName);
    script.setSourceCode(QString::fromUtf8(LinkScript));
    script.setInjectionPoint(QWebEngineScript::DocumentCreation);
    script.setWorldId(QWebEngineScript::ApplicationWorld);
    scripts().insert(script);
    connect(this, &QWebEnginePage::certificateError, this, &WebPage::answerCertificate);
}

bool WebPage::acceptNavigationRequest(const QUrl &url, NavigationType, bool)
{
    const QString address = url.toString(QUrl::FullyEncoded);
    if (!m_checked.isEmpty() && address == m_checked) {
        m_checked.clear();
        return true;
    }
    return m_navigation.beforeNavigate(address);
}

QWebEnginePage *WebPage::createWindow(WebWindowType)
{
    return nullptr;
}

QStringList WebPage::chooseFiles(FileSelectionMode, const QStringList &oldFiles,
                                 const QStringList &)
{
    const QString path = m_desktop.openFileDialog(oldFiles.value(0), QString());
    return path.isEmpty() ? QStringList() : QStringList{path};
}

void WebPage::javaScriptAlert(const QUrl &, const QString &msg)
{
    m_navigation.alert(msg);
}

bool WebPage::javaScriptConfirm(const QUrl &, const QString &msg)
{
    return m_navigation.confirm(msg);
}

bool WebPage::javaScriptPrompt(const QUrl &, const QString &msg, const QString &defaultValue,
                               QString *result)
{
    const std::optional<QString> answer = m_navigation.prompt(msg, defaultValue);
    if (answer)
        *result = *answer;
    return answer.has_value();
}

void WebPage::javaScriptConsoleMessage(JavaScriptConsoleMessageLevel level, const QString &message,
                                       int lineNumber, const QString &sourceID)
{
    if (sourceID == QStringLiteral("userscript:") + LinkScriptName && message.startsWith(QChar(1)))
        followWrittenLink(message.mid(1));
    else
        QWebEnginePage::javaScriptConsoleMessage(level, message, lineNumber, sourceID);
}

void WebPage::followWrittenLink(const QString &written)
{
    if (!m_navigation.beforeNavigate(written))
        return;
    const QUrl url(written);
    m_checked = url.toString(QUrl::FullyEncoded);
    load(url);
}

void WebPage::answerCertificate(const QWebEngineCertificateError &error)
{
    QWebEngineCertificateError answer = error;
    if (error.isOverridable() &&
        m_navigation.acceptCertificate(error.url().host(), error.description()))
        answer.acceptCertificate();
    else
        answer.rejectCertificate();
}
