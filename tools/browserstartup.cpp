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
    // The pages are drawn in software and the program opens no OpenGL context: one made at
    // start-up for the web engine would load the system's OpenGL (with a software renderer,
    // some 50 MB) whether or not the browser is ever shown. The person may choose otherwise.
    if (!qEnvironmentVariableIsSet("QT_QUICK_BACKEND"))
        qputenv("QT_QUICK_BACKEND", "software");
    if (!qEnvironmentVariableIsSet("QT_XCB_GL_INTEGRATION"))
        qputenv("QT_XCB_GL_INTEGRATION", "none");
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
