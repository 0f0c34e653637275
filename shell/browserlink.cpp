#include "browserlink.h"

#include <algorithm>
#include <optional>

namespace {

bool startsWithAny(const QString &text, std::initializer_list<const char *> prefixes)
{
    return std::any_of(prefixes.begin(), prefixes.end(), [&text](const char *prefix) {
        return text.startsWith(QLatin1String(prefix));
    });
}

// Blanks too: an address from a browser has them escaped, so one with a blank is several.
bool hasControlOrBlank(const QString &text)
{
    return std::any_of(text.begin(), text.end(),
                       [](QChar c) { return c.unicode() <= 0x20 || c.unicode() == 0x7F; });
}

bool hasControl(const QString &text)
{
    return std::any_of(text.begin(), text.end(),
                       [](QChar c) { return c.unicode() < 0x20 || c.unicode() == 0x7F; });
}

// The text under `key`: empty when absent, nullopt when it is not a text.
std::optional<QString> textOf(const QJsonObject &message, const char *key)
{
    const QJsonValue value = message.value(QLatin1String(key));
    if (value.isUndefined())
        return QString();
    if (!value.isString())
        return std::nullopt;
    return value.toString();
}

} // namespace

QJsonObject BrowserLink::toJson() const
{
    QJsonObject message{{QStringLiteral("action"),
                         kind == Kind::Add ? QStringLiteral("add") : QStringLiteral("grab")},
                        {QStringLiteral("url"), url}};
    if (!referrer.isEmpty())
        message.insert(QStringLiteral("referrer"), referrer);
    if (!cookie.isEmpty())
        message.insert(QStringLiteral("cookie"), cookie);
    return message;
}

std::variant<BrowserLink, QString> BrowserLink::fromJson(const QJsonObject &message)
{
    BrowserLink link;
    const std::optional<QString> action = textOf(message, "action");
    if (!action || action->isEmpty())
        return QStringLiteral("Falta la acción (\"action\") del mensaje.");
    if (*action == QLatin1String("grab"))
        link.kind = Kind::Grab;
    else if (*action != QLatin1String("add"))
        return QStringLiteral("Acción desconocida: \"") + *action + QStringLiteral("\".");

    const std::optional<QString> url = textOf(message, "url");
    if (!url)
        return QStringLiteral("La dirección (\"url\") debe ser un texto con una sola dirección.");
    if (url->isEmpty())
        return QStringLiteral("Falta la dirección (\"url\") del mensaje.");
    if (hasControlOrBlank(*url))
        return QStringLiteral("La dirección contiene caracteres no válidos.");
    link.url = *url;
    if (link.kind == Kind::Grab) {
        if (!startsWithAny(link.url, {"http://", "https://"}))
            return QStringLiteral("El capturador de enlaces solo lee páginas http:// o https://.");
        return link;
    }
    if (!startsWithAny(link.url, {"http://", "https://", "ftp://"}))
        return QStringLiteral("Corvane solo descarga direcciones http://, https:// o ftp://.");

    const std::optional<QString> referrer = textOf(message, "referrer");
    if (!referrer || hasControlOrBlank(*referrer))
        return QStringLiteral("La página de origen (\"referrer\") no es una dirección válida.");
    if (!referrer->isEmpty() && !startsWithAny(*referrer, {"http://", "https://"}))
        return QStringLiteral("La página de origen debe ser una dirección http:// o https://.");
    link.referrer = *referrer;

    const std::optional<QString> cookie = textOf(message, "cookie");
    if (!cookie)
        return QStringLiteral("Las cookies (\"cookie\") deben ser un texto.");
    if (hasControl(*cookie))
        return QStringLiteral("Las cookies contienen caracteres no válidos.");
    link.cookie = *cookie;
    return link;
}
