#include "newurl.h"

#include "desktop.h"
#include "failure.h"
#include "urls.h"

namespace {

bool isAddress(const QString &text)
{
    return text.startsWith(QLatin1String("http://")) ||
           text.startsWith(QLatin1String("https://")) || text.startsWith(QLatin1String("ftp://"));
}

} // namespace

QString NewUrl::run(const QString &clipboard)
{
    const std::optional<QString> answer =
        m_place.desktop.inputBox(QStringLiteral("Escriba aquí la dirección del archivo"),
                                 isAddress(clipboard) ? clipboard : QString());
    if (!answer)
        return {};
    QString url;
    try {
        url = ResolveDots(*answer);
    } catch (const Failure &) {
        // An address that climbs above its host is no address at all.
    }
    if (!isAddress(url)) {
        m_place.desktop.messageBox(QStringLiteral("Debe escribir una dirección web correcta (debe "
                                                  "empezar por http:// o ftp://)"),
                                   Desktop::Icon::Critical);
        return {};
    }
    FtpCredentials login{QString(), QString(), false};
    if (url.startsWith(QLatin1String("ftp://")))
        login = m_place.desktop.askFtpLogin(LoginCaption, FtpCredentials());

    return m_place(url, login,
                   QStringLiteral("Ya se ha alcanzado el máximo posible de descargas en cola."));
}
