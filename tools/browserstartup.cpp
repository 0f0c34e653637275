#include "browserstartup.h"

#include <QCoreApplication>
#include <QWebEngineUrlScheme>
#include <unistd.h>

void prepareBrowser()
{
    if (::geteuid() == 0) {
        const QByteArray flags = qgetenv("QTWEBENGINE_CHROMIUM_FLAGS");
        if (!flags.contains("--no-sandbox"))
            qputenv("QTWEBENGINE_CHROMIUM_FLAGS", QByteArray(flags + " --no-sandbox").trimmed());
    }
    // The web engine shares its OpenGL contexts with the windows that show its pages.
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    for (const QByteArray &name : takenSchemes()) {
        QWebEngineUrlScheme scheme(name);
        // Everything after the prefix is an address of its own, not a host and a path.
        scheme.setSyntax(QWebEngineUrlScheme::Syntax::Path);
        QWebEngineUrlScheme::registerScheme(scheme);
    }
}

QByteArrayList takenSchemes()
{
    return {QByteArrayLiteral("zelq"), QByteArrayLiteral("newwin")};
}
