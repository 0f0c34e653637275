#pragma once

#include <QProcess>

// An X server of the test's own (Xvfb on a free display), for running the real program as a
// person would see it; stopped when the object goes.
class XServer
{
public:
    ~XServer()
    {
        if (m_server.state() == QProcess::NotRunning)
            return;
        m_server.terminate();
        if (!m_server.waitForFinished(3000))
            m_server.kill();
        m_server.waitForFinished(3000);
    }

    // False, with the reason in error(), when the server did not come up.
    bool start()
    {
        // -displayfd: the server picks a free display and writes its number once it takes
        // clients. -noreset: otherwise the server starts over whenever its last client leaves,
        // and drops a client that connects meanwhile.
        m_server.start("Xvfb", {"-displayfd", "1", "-screen", "0", "1280x800x24", "-nolisten",
                                "tcp", "-noreset"});
        if (!m_server.waitForStarted(5000)) {
            m_error = "Xvfb: " + m_server.errorString();
            return false;
        }
        while (!m_server.canReadLine()) {
            if (!m_server.waitForReadyRead(10000)) {
                m_error = "Xvfb gave no display: " + m_server.readAllStandardError();
                return false;
            }
        }
        m_display = ':' + QString::fromLatin1(m_server.readLine().trimmed());
        return true;
    }
    QString error() const { return m_error; }
    QString display() const { return m_display; }
    // The environment of a program that draws on this server.
    QProcessEnvironment environment() const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("DISPLAY", m_display);
        environment.insert("QT_QPA_PLATFORM", "xcb");
        return environment;
    }
    // Runs a command against this server (e.g. xdotool) and waits for it; its exit status.
    int run(const QString &program, const QStringList &arguments) const
    {
        QProcess process;
        process.setProcessEnvironment(environment());
        process.start(program, arguments);
        return process.waitForFinished(10000) ? process.exitCode() : -1;
    }

private:
    QProcess m_server;
    QString m_display;
    QString m_error;
};
