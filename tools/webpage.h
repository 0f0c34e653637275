#pragma once

#include <QWebEnginePage>

class Desktop;
class QWebEngineCertificateError;
class WebNavigation;

// The page of the browser window: every navigation passes the window's rules first, new windows
// are refused, and the page's own boxes and file dialogs go through the desktop.
class WebPage final : public QWebEnginePage
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(WebPage)

public:
    WebPage(WebNavigation &navigation, Desktop &desktop, QObject *parent = nullptr);

protected:
    bool acceptNavigationRequest(const QUrl &url, NavigationType type, bool isMainFrame) override;
    QWebEnginePage *createWindow(WebWindowType type) override;
    QStringList chooseFiles(FileSelectionMode mode, const QStringList &oldFiles,
                            const QStringList &acceptedMimeTypes) override;
    void javaScriptAlert(const QUrl &securityOrigin, const QString &msg) override;
    bool javaScriptConfirm(const QUrl &securityOrigin, const QString &msg) override;
    bool javaScriptPrompt(const QUrl &securityOrigin, const QString &msg,
                          const QString &defaultValue, QString *result) override;
    void javaScriptConsoleMessage(JavaScriptConsoleMessageLevel level, const QString &message,
                                  int lineNumber, const QString &sourceID) override;

private:
    void followWrittenLink(const QString &written);
    void answerCertificate(const QWebEngineCertificateError &error);

    WebNavigation &m_navigation;
    Desktop &m_desktop;
    // The address of a navigation already checked with its link's own text.
    QString m_checked;
};
