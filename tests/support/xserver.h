#pragma once

#include <QProcess>

// An X server of the test's own (Xvfb on a free display), for running the real program as a
// person would see it; stopped when the object goes.
class XServer
{
public:
    XServer() = default;
    XServer(const XServer &) = delete;
    XServer &operator=(const XServer &) = delete;
    ~XServer();

    // False, with the reason in error(), when the server did not come up.
    bool start();
    QString error() const { return m_error; }
    QString display() const { return m_display; }
    // The environment of a program that draws on this server.
    QProcessEnvironment environment() const;
    // Runs a command against this server (e.g. xdotool) and waits for it; its exit status.
    int run(const QString &program, const QStringList &arguments) const;

private:
    QProcess m_server;
    QString m_display;
    QString m_error;
};
