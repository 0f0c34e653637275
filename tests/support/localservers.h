#pragma once

#include "testauthority.h"

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

// A real server started on a free loopback port over a folder, stopped when the object goes.
class LocalServer
{
public:
    virtual ~LocalServer();

    // False, with the reason in error(), when the server did not come up.
    bool start();
    QString error() const { return m_error; }
    quint16 port() const { return m_port; }
    virtual QString url(const QString &name) const = 0;

protected:
    explicit LocalServer(QString root) : m_root(std::move(root)) {}
    virtual void launch(QProcess &process) = 0;

    QString m_root;
    QTemporaryDir m_work;
    quint16 m_port = 0;

private:
    QProcess m_process;
    QString m_error;
};

// nginx serving the folder; `extra` goes into its server block (e.g. "limit_rate 200k;").
class NginxServer final : public LocalServer
{
public:
    explicit NginxServer(const QString &root, const QString &extra = {})
        : LocalServer(root), m_extra(extra)
    {}
    // Over TLS with that certificate; its addresses are https://.
    NginxServer(const QString &root, const ServerCertificate &tls) : LocalServer(root), m_tls(tls)
    {}
    QString url(const QString &name) const override;

private:
    void launch(QProcess &process) override;
    QString m_extra;
    ServerCertificate m_tls;
};

// An anonymous, read-only FTP server over the folder; sending at most `bytesPerSecond` on a
// data connection when that is not 0.
class FtpdServer final : public LocalServer
{
public:
    explicit FtpdServer(const QString &root, int bytesPerSecond = 0)
        : LocalServer(root), m_bytesPerSecond(bytesPerSecond)
    {}
    QString url(const QString &name) const override;

private:
    void launch(QProcess &process) override;
    int m_bytesPerSecond;
};
