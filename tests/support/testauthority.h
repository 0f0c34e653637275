#pragma once

#include <QSslConfiguration>
#include <QTemporaryDir>

// A server's certificate and key, as files and as a configuration for a Qt server.
struct ServerCertificate
{
    QString certificate;
    QString key;
    QSslConfiguration configuration() const;
};

// A throw-away certificate authority made with the openssl command in a temporary folder, gone
// with the object. Nothing secret is kept anywhere else.
class TestAuthority
{
public:
    TestAuthority();

    // False, with the reason in error(), when openssl failed.
    bool ok() const { return m_error.isEmpty(); }
    QString error() const { return m_error; }
    // The authority's certificate, for SSL_CERT_FILE.
    QString certificateFile() const { return m_dir.filePath(QStringLiteral("ca.pem")); }

    // A certificate signed by this authority for `altNames`, e.g. "IP:127.0.0.1,DNS:localhost".
    ServerCertificate issue(const QString &name, const QString &altNames);

private:
    bool openssl(const QString &arguments);

    QTemporaryDir m_dir;
    QString m_error;
    int m_issued = 0;
};
