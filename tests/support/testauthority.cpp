#include "testauthority.h"

#include <QFile>
#include <QProcess>
#include <QSslCertificate>
#include <QSslKey>
#include <QSslSocket>

namespace {

// Elliptic-curve keys: made at once, where RSA keys take a while.
const QStringList NewKey = {
    QStringLiteral("-newkey"), QStringLiteral("ec"), QStringLiteral("-pkeyopt"),
    QStringLiteral("ec_paramgen_curve:prime256v1"), QStringLiteral("-nodes")};

} // namespace

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

TestAuthority::TestAuthority()
{
    openssl(QStringList{QStringLiteral("req"), QStringLiteral("-x509")} + NewKey +
            QStringList{QStringLiteral("-keyout"), m_dir.filePath(QStringLiteral("ca.key")),
                        QStringLiteral("-out"), certificateFile(), QStringLiteral("-days"),
                        QStringLiteral("2"), QStringLiteral("-subj"),
                        QStringLiteral("/CN=Autoridad de pruebas")});
}

ServerCertificate TestAuthority::issue(const QString &name, const QString &altNames)
{
    const ServerCertificate made{m_dir.filePath(name + QStringLiteral(".pem")),
                                 m_dir.filePath(name + QStringLiteral(".key"))};
    const QString request = m_dir.filePath(name + QStringLiteral(".csr"));
    const QString extensions = m_dir.filePath(name + QStringLiteral(".ext"));
    QFile file(extensions);
    if (file.open(QIODevice::WriteOnly))
        file.write("subjectAltName=" + altNames.toUtf8() + "\n");
    file.close();
    const bool signedOk =
        openssl(QStringList{QStringLiteral("req"), QStringLiteral("-new")} + NewKey +
                QStringList{QStringLiteral("-keyout"), made.key, QStringLiteral("-out"), request,
                            QStringLiteral("-subj"), QStringLiteral("/CN=") + name}) &&
        openssl({QStringLiteral("x509"), QStringLiteral("-req"), QStringLiteral("-in"), request,
                 QStringLiteral("-CA"), certificateFile(), QStringLiteral("-CAkey"),
                 m_dir.filePath(QStringLiteral("ca.key")), QStringLiteral("-set_serial"),
                 QString::number(++m_issued), QStringLiteral("-days"), QStringLiteral("2"),
                 QStringLiteral("-extfile"), extensions, QStringLiteral("-out"), made.certificate});
    return signedOk ? made : ServerCertificate();
}

bool TestAuthority::openssl(const QStringList &arguments)
{
    if (!ok())
        return false;
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral("openssl"), arguments);
    if (!process.waitForFinished(20000) || process.exitCode() != 0) {
        m_error = QStringLiteral("openssl ") + arguments.join(QLatin1Char(' ')) +
                  QStringLiteral(": ") + QString::fromLocal8Bit(process.readAll()) +
                  process.errorString();
        return false;
    }
    return true;
}
