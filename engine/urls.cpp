#include "urls.h"

#include "desktop.h"
#include "failure.h"
#include "textfile.h"

#include <QStringList>
#include <QUrl>
#include <algorithm>

namespace {

const QString Slashes = QStringLiteral("//");

// The text after the first "//". Without one, only the first character is dropped; kept so every
// helper cuts the same way.
QString afterSlashes(const QString &url)
{
    return url.mid(url.indexOf(Slashes) + 2);
}

// Where the host of `rest` (an address after its "//") ends: at the bracket that closes an IPv6
// literal, else at the first colon, even one in the path, else at the first "/". -1 for a
// literal without its closing bracket.
qsizetype hostEnd(const QString &rest)
{
    if (rest.startsWith(QLatin1Char('[')))
        return rest.indexOf(QLatin1Char(']')) < 0 ? -1 : rest.indexOf(QLatin1Char(']')) + 1;
    qsizetype end = rest.indexOf(QLatin1Char(':'));
    if (end < 0)
        end = rest.indexOf(QLatin1Char('/'));
    return end < 0 ? rest.size() : end;
}

quint16 defaultPort(const QString &url)
{
    if (url.startsWith(QLatin1String("ftp:")))
        return 21;
    return url.startsWith(QLatin1String("https:")) ? 443 : 80;
}

} // namespace

QString HostOf(const QString &url, Desktop &desktop)
{
    if (!url.startsWith(QLatin1String("http://")) && !url.startsWith(QLatin1String("https://")) &&
        !url.startsWith(QLatin1String("ftp:"))) {
        desktop.messageBox(QStringLiteral("Dirección incorrecta."), Desktop::Icon::Critical);
        return HostError;
    }
    const QString rest = afterSlashes(url);
    const qsizetype end = hostEnd(rest);
    if (end < 0) {
        desktop.messageBox(QStringLiteral("Dirección incorrecta."), Desktop::Icon::Critical);
        return HostError;
    }
    // An IPv6 literal is connected to without its brackets.
    if (rest.startsWith(QLatin1Char('[')))
        return rest.mid(1, end - 2);
    return rest.left(end);
}

QString HostLineOf(const QString &url)
{
    const QString rest = afterSlashes(url);
    const QString host = rest.left(std::max<qsizetype>(hostEnd(rest), 0));
    const quint16 port = PortOf(url);
    return port == defaultPort(url) ? host : host + QLatin1Char(':') + QString::number(port);
}

quint16 PortOf(const QString &url)
{
    const int slashes = url.indexOf(Slashes);
    if (slashes < 0)
        return 80;
    const QString rest = url.mid(slashes + 2);
    const qsizetype colon = rest.indexOf(QLatin1Char(':'), std::max<qsizetype>(hostEnd(rest), 0));
    if (colon >= 0) {
        const int slash = rest.indexOf(QLatin1Char('/'), colon + 1);
        if (slash < 0)
            throw Failure(QStringLiteral("El puerto de la dirección no va seguido de \"/\""));
        const QString digits = rest.mid(colon + 1, slash - colon - 1);
        const qint64 port = leadingNumber(digits);
        if (port < 0 || port > 65535)
            throw Failure(QStringLiteral("Puerto incorrecto: ") + digits);
        return quint16(port);
    }
    return defaultPort(url);
}

QString PathOf(const QString &url)
{
    const QString rest = afterSlashes(url);
    const int slash = rest.indexOf(QLatin1Char('/'));
    return slash < 0 ? QString() : rest.mid(slash + 1);
}

QString FileNameOf(const QString &url)
{
    QString index = QStringLiteral("index.html");
    if (!url.contains(Slashes))
        return index;
    QString left = afterSlashes(url);
    const int first = left.indexOf(QLatin1Char('/'));
    if (first >= 0)
        left = left.mid(first + 1);
    // "get.php?id=7" names the file "get.php".
    for (const QLatin1Char mark : {QLatin1Char('?'), QLatin1Char('#')}) {
        if (const qsizetype at = left.indexOf(mark); at >= 0)
            left.truncate(at);
    }
    const int last = left.lastIndexOf(QLatin1Char('/'));
    return SafeFileName(QUrl::fromPercentEncoding((last > 0 ? left.mid(last + 1) : left).toUtf8()),
                        index);
}

QString SafeFileName(QString name, const QString &fallback)
{
    for (QChar &c : name) {
        if (c == QLatin1Char('/') || c == QLatin1Char('\\') || c.unicode() < 0x20 ||
            c.unicode() == 0x7F)
            c = QLatin1Char('_');
    }
    if (name.isEmpty() || name == QLatin1String(".") || name == QLatin1String(".."))
        return fallback;
    return name;
}

AddressLogin SplitLogin(const QString &url)
{
    const qsizetype slashes = url.indexOf(Slashes);
    if (slashes < 0)
        return {url, {}, {}};
    const qsizetype authority = slashes + 2;
    qsizetype end = url.indexOf(QLatin1Char('/'), authority);
    if (end < 0)
        end = url.size();
    const qsizetype at = url.lastIndexOf(QLatin1Char('@'), end - 1);
    if (at < authority)
        return {url, {}, {}};
    const QString login = url.mid(authority, at - authority);
    const qsizetype colon = login.indexOf(QLatin1Char(':'));
    const auto decoded = [](const QString &part) {
        return QUrl::fromPercentEncoding(part.toUtf8());
    };
    return {url.left(authority) + url.mid(at + 1), decoded(login.left(colon)),
            colon < 0 ? QString() : decoded(login.mid(colon + 1))};
}

QString Resolved(const QString &base, const QString &given)
{
    // A line break would split the list files; a blank would end the request's path.
    if (std::any_of(given.begin(), given.end(),
                    [](QChar c) { return c.unicode() < 0x20 || c.unicode() == 0x7F; }))
        return {};
    QString reference = QString(given).replace(QLatin1Char(' '), QLatin1String("%20"));
    if (reference.startsWith(QLatin1String("http://")) ||
        reference.startsWith(QLatin1String("https://")) ||
        reference.startsWith(QLatin1String("ftp://")))
        return reference;
    const QUrl relative(reference, QUrl::StrictMode);
    // Another scheme ("javascript:", "file:") is no address to download from.
    if (reference.isEmpty() || !relative.isValid() || !relative.scheme().isEmpty())
        return {};
    const QUrl resolved = QUrl(base).resolved(relative);
    return resolved.isValid() ? resolved.toString(QUrl::FullyEncoded) : QString();
}

QString ResolveDots(const QString &url)
{
    if (url.isEmpty())
        return QString();
    QString scheme;
    for (const QLatin1String prefix :
         {QLatin1String("http://"), QLatin1String("https://"), QLatin1String("ftp://")}) {
        if (url.startsWith(prefix))
            scheme = prefix;
    }
    const QStringList parts = url.mid(scheme.size()).split(QLatin1Char('/'));
    constexpr int MaxSegments = 256;
    if (parts.size() > MaxSegments)
        throw Failure(QStringLiteral("Demasiados segmentos en la dirección"));
    QStringList segments;
    for (const QString &part : parts) {
        if (part == QLatin1String("..")) {
            // ".." drops itself and the segment before it, but never the first one (the host):
            // the index would step back past the start of the table.
            if (segments.size() < 2)
                throw Failure(QStringLiteral("La dirección sube por encima de su raíz"));
            segments.removeLast();
        } else {
            segments.append(part);
        }
    }
    return scheme + segments.join(QLatin1Char('/'));
}

QString ExtensionOf(const QString &name)
{
    const int dot = name.lastIndexOf(QLatin1Char('.'));
    return dot < 0 ? QString() : name.mid(dot + 1);
}
