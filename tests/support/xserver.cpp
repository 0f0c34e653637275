#include "xserver.h"

XServer::~XServer()
{
    if (m_server.state() == QProcess::NotRunning)
        return;
    m_server.terminate();
    if (!m_server.waitForFinished(3000))
        m_server.kill();
    m_server.waitForFinished(3000);
}

bool XServer::start()
{
    // -displayfd: the server picks a free display and writes its number once it accepts clients.
    m_server.start(QStringLiteral("Xvfb"), QStringLiteral("-displayfd 1 -screen 0 1280x800x24 "
                                                          "-nolisten tcp")
                                               .split(QLatin1Char(' ')));
    if (!m_server.waitForStarted(5000)) {
        m_error = QStringLiteral("Xvfb: ") + m_server.errorString();
        return false;
    }
    while (!m_server.canReadLine()) {
        if (!m_server.waitForReadyRead(10000)) {
            m_error = QStringLiteral("Xvfb gave no display: ") +
                      QString::fromLocal8Bit(m_server.readAllStandardError());
            return false;
        }
    }
    m_display = QLatin1Char(':') + QString::fromLatin1(m_server.readLine().trimmed());
    return true;
}

QProcessEnvironment XServer::environment() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DISPLAY"), m_display);
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    return environment;
}

int XServer::run(const QString &program, const QStringList &arguments) const
{
    QProcess process;
    process.setProcessEnvironment(environment());
    process.start(program, arguments);
    return process.waitForFinished(10000) ? process.exitCode() : -1;
}
