#pragma once

#include "testauthority.h"

#include <QProcess>
#include <QTemporaryDir>

// A real server on a free loopback port over a folder, stopped when the object goes.
class LocalServer
{
public:
    ~LocalServer();
    // False, with the reason in error(), when the server did not come up.
    bool start();
    QString error() const { return m_error; }
    quint16 port() const { return m_port; }
    QString url(const QString &name) const
    {
        return QStringLiteral("%1://127.0.0.1:%2/%3").arg(m_scheme).arg(m_port).arg(name);
    }

protected:
    explicit LocalServer(QString scheme);

    QTemporaryDir m_work;
    const quint16 m_port;
    QString m_scheme;
    QProcess m_process; // set up by the server, started by start()

private:
    QString m_error;
};

// nginx serving the folder; `extra` goes into its server block (e.g. "limit_rate 200k;").
class NginxServer final : public LocalServer
{
public:
    explicit NginxServer(const QString &root, const QString &extra = {})
        : NginxServer(root, extra, ServerCertificate())
    {}
    // Over TLS with that certificate; its addresses are https://.
    NginxServer(const QString &root, const ServerCertificate &tls) : NginxServer(root, {}, tls) {}

private:
    NginxServer(const QString &root, const QString &extra, const ServerCertificate &tls);
};

// An anonymous, read-only FTP server over the folder; sending at most `bytesPerSecond` on a
// data connection when that is not 0.
class FtpdServer final : public LocalServer
{
public:
    explicit FtpdServer(const QString &root, int bytesPerSecond = 0);
};
