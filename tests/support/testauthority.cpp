#include "testauthority.h"

#include <QFile>
#include <QProcess>
#include <QSslCertificate>
#include <QSslKey>
#include <QSslSocket>

QSslConfiguration ServerCertificate::configuration() const
{
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setLocalCertificateChain(QSslCertificate::fromPath(certificate));
    QFile keyFile(key);
    if (keyFile.open(QIODevice::ReadOnly))
        configuration.setPrivateKey(QSslKey(&keyFile, QSsl::Ec));
    configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
    return configuration;
}

// Elliptic-curve keys: made at once, where RSA keys take a while. Every file is in the folder.
TestAuthority::TestAuthority()
{
    openssl(QStringLiteral("req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes "
                           "-keyout ca.key -out ca.pem -days 2 -subj /CN=Autoridad_de_pruebas"));
}

ServerCertificate TestAuthority::issue(const QString &name, const QString &altNames)
{
    QFile extensions(m_dir.filePath(name + QStringLiteral(".ext")));
    if (extensions.open(QIODevice::WriteOnly))
        extensions.write("subjectAltName=" + altNames.toUtf8() + "\n");
    extensions.close();
    const bool made =
        openssl(QStringLiteral("req -new -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes "
                               "-keyout %1.key -out %1.csr -subj /CN=%1")
                    .arg(name)) &&
        openssl(QStringLiteral("x509 -req -in %1.csr -CA ca.pem -CAkey ca.key -set_serial %2 "
                               "-days 2 -extfile %1.ext -out %1.pem")
                    .arg(name)
                    .arg(++m_issued));
    return made ? ServerCertificate{m_dir.filePath(name + QStringLiteral(".pem")),
                                    m_dir.filePath(name + QStringLiteral(".key"))}
                : ServerCertificate();
}

// `arguments` separated by single blanks, none of them holding one.
bool TestAuthority::openssl(const QString &arguments)
{
    if (!ok())
        return false;
    QProcess process;
    process.setWorkingDirectory(m_dir.path());
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral("openssl"), arguments.split(QLatin1Char(' ')));
    if (!process.waitForFinished(20000) || process.exitCode() != 0) {
        m_error = QStringLiteral("openssl ") + arguments + QStringLiteral(": ") +
                  QString::fromLocal8Bit(process.readAll()) + process.errorString();
        return false;
    }
    return true;
}
