#include "tlstrust.h"

#include <QStringList>

QSslConfiguration secureConfiguration()
{
    // Read once: the system's list is long, and the environment does not change while running.
    static const QSslConfiguration configuration = [] {
        QSslConfiguration made = QSslConfiguration::defaultConfiguration();
        QList<QSslCertificate> authorities = QSslConfiguration::systemCaCertificates();
        const QString extra = qEnvironmentVariable("SSL_CERT_FILE");
        if (!extra.isEmpty())
            authorities += QSslCertificate::fromPath(extra);
        made.setCaCertificates(authorities);
        made.setPeerVerifyMode(QSslSocket::VerifyPeer);
        return made;
    }();
    return configuration;
}

QString certificateProblem(const QList<QSslError> &errors)
{
    QStringList reasons;
    for (const QSslError &error : errors) {
        QString reason;
        switch (error.error()) {
        case QSslError::HostNameMismatch:
            reason = QStringLiteral("es de otro nombre de servidor");
            break;
        case QSslError::CertificateExpired:
            reason = QStringLiteral("ha caducado");
            break;
        case QSslError::CertificateNotYetValid:
            reason = QStringLiteral("todavía no es válido");
            break;
        case QSslError::CertificateRevoked:
            reason = QStringLiteral("ha sido revocado");
            break;
        case QSslError::SelfSignedCertificate:
        case QSslError::SelfSignedCertificateInChain:
        case QSslError::UnableToGetIssuerCertificate:
        case QSslError::UnableToGetLocalIssuerCertificate:
        case QSslError::UnableToVerifyFirstCertificate:
        case QSslError::CertificateUntrusted:
            reason = QStringLiteral("lo firma una autoridad desconocida");
            break;
        default:
            reason = QStringLiteral("no se puede comprobar");
            break;
        }
        if (!reasons.contains(reason))
            reasons << reason;
    }
    if (reasons.isEmpty())
        reasons << QStringLiteral("no se puede comprobar");
    return reasons.join(QStringLiteral(" y "));
}
