#pragma once

#include "files.h"

#include <QFile>
#include <QProcess>
#include <QSslConfiguration>
#include <QSslKey>
#include <QTemporaryDir>

// A server's certificate and key, as files and as a configuration for a Qt server.
struct ServerCertificate
{
    QString certificate;
    QString key;

    QSslConfiguration configuration() const
    {
        QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
        configuration.setLocalCertificateChain(QSslCertificate::fromPath(certificate));
        QFile keyFile(key);
        if (keyFile.open(QIODevice::ReadOnly))
            configuration.setPrivateKey(QSslKey(&keyFile, QSsl::Ec));
        configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
        return configuration;
    }
};

// A throw-away certificate authority made with the openssl command in a temporary folder, gone
// with the object. Nothing secret is kept anywhere else. Elliptic-curve keys: made at once,
// where RSA keys take a while.
class TestAuthority
{
public:
    TestAuthority()
    {
        openssl("req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -keyout ca.key "
                "-out ca.pem -days 2 -subj /CN=Autoridad_de_pruebas");
    }

    // False, with the reason in error(), when openssl failed.
    bool ok() const { return m_error.isEmpty(); }
    QString error() const { return m_error; }
    // The authority's certificate, for SSL_CERT_FILE.
    QString certificateFile() const { return m_dir.filePath(QStringLiteral("ca.pem")); }

    // A certificate signed by this authority for `altNames`, e.g. "IP:127.0.0.1,DNS:localhost".
    ServerCertificate issue(const QString &name, const QString &altNames)
    {
        writeFile(m_dir.filePath(name + QStringLiteral(".ext")),
                  "subjectAltName=" + altNames.toUtf8() + "\n");
        const bool made =
            openssl(QStringLiteral("req -new -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 "
                                   "-nodes -keyout %1.key -out %1.csr -subj /CN=%1")
                        .arg(name)) &&
            openssl(QStringLiteral("x509 -req -in %1.csr -CA ca.pem -CAkey ca.key -set_serial %2 "
                                   "-days 2 -extfile %1.ext -out %1.pem")
                        .arg(name)
                        .arg(++m_issued));
        return made ? ServerCertificate{m_dir.filePath(name + QStringLiteral(".pem")),
                                        m_dir.filePath(name + QStringLiteral(".key"))}
                    : ServerCertificate();
    }

private:
    // In the folder; the arguments are separated by single blanks, none holds one.
    bool openssl(const QString &arguments)
    {
        if (!ok())
            return false;
        QProcess process;
        process.setWorkingDirectory(m_dir.path());
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(QStringLiteral("openssl"), arguments.split(QLatin1Char(' ')));
        if (!process.waitForFinished(20000) || process.exitCode() != 0)
            m_error = "openssl " + arguments + ": " + process.readAll() + process.errorString();
        return ok();
    }

    QTemporaryDir m_dir;
    QString m_error;
    int m_issued = 0;
};
