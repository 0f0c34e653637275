#include "ftpreply.h"

#include "failure.h"
#include "textfile.h"

#include <QHostAddress>
#include <QStringList>
#include <QUrl>

namespace {

// A line this long is no reply; what was kept of it goes.
constexpr qsizetype MaxLine = 64 * 1024;

bool startsWithCode(QByteArrayView line)
{
    return line.size() >= 3 &&
           std::all_of(line.begin(), line.begin() + 3, [](char c) { return c >= '0' && c <= '9'; });
}

QString decoded(const QString &text)
{
    return QUrl::fromPercentEncoding(text.toUtf8());
}

bool onPrivateNetwork(const QHostAddress &address)
{
    static const std::pair<const char *, int> Networks[] = {
        {"10.0.0.0", 8},  {"172.16.0.0", 12},  {"192.168.0.0", 16},
        {"127.0.0.0", 8}, {"169.254.0.0", 16}, {"100.64.0.0", 10}};
    return std::any_of(std::begin(Networks), std::end(Networks), [&](const auto &network) {
        return address.isInSubnet(QHostAddress(QLatin1String(network.first)), network.second);
    });
}

} // namespace

namespace Ftp {

QByteArray command(const QString &text)
{
    return text.toUtf8() + QByteArrayLiteral("\r\n");
}

QList<QByteArray> ReplyReader::take(QByteArrayView chunk)
{
    QList<QByteArray> replies;
    qsizetype from = 0;
    for (qsizetype end = chunk.indexOf('\n'); end >= 0; end = chunk.indexOf('\n', from)) {
        QByteArrayView piece = chunk.sliced(from, end - from);
        from = end + 1;
        QByteArray whole = std::exchange(m_partial, {}) + piece.toByteArray();
        if (whole.endsWith('\r'))
            whole.chop(1);
        line(whole, replies);
    }
    m_partial += chunk.sliced(from).toByteArray();
    if (m_partial.size() > MaxLine)
        m_partial.clear();
    return replies;
}

void ReplyReader::line(QByteArrayView text, QList<QByteArray> &replies)
{
    const bool coded = startsWithCode(text);
    if (!m_openCode.isEmpty()) {
        // Inside a multi-line reply everything but its closing line is text.
        if (coded && text.first(3) == m_openCode && (text.size() == 3 || text[3] == ' ')) {
            m_openCode.clear();
            replies.append(text.toByteArray());
        }
        return;
    }
    if (!coded)
        return;
    if (text.size() > 3 && text[3] == '-')
        m_openCode = text.first(3).toByteArray();
    else
        replies.append(text.toByteArray());
}

int replyCode(QByteArrayView line)
{
    const QByteArrayView head = line.first(std::min<qsizetype>(3, line.size()));
    return int(leadingNumber(QString::fromLatin1(head.data(), head.size())));
}

qint64 sizeOf(QByteArrayView line)
{
    const QByteArrayView rest = line.sliced(std::min<qsizetype>(4, line.size()));
    return leadingNumber(QString::fromLatin1(rest.data(), rest.size()));
}

QString directoryOf(const QString &path)
{
    const QStringList segments = path.split(QLatin1Char('/'));
    QString directory;
    for (qsizetype i = 0; i + 1 < segments.size(); ++i)
        directory += QLatin1Char('/') + segments[i];
    // A file at the root is in "/": an empty argument is refused by many servers.
    return directory.isEmpty() ? QStringLiteral("/") : decoded(directory);
}

QString remoteName(const QString &path)
{
    return decoded(path.section(QLatin1Char('/'), -1));
}

Endpoint passiveEndpoint(QByteArrayView line)
{
    const qsizetype open = line.indexOf('(');
    const qsizetype close = open < 0 ? -1 : line.indexOf(')', open);
    if (close < 0)
        throw Failure(QStringLiteral("Respuesta 227 sin dirección"));
    const QByteArrayView inside = line.sliced(open + 1, close - open - 1);
    const QStringList numbers = QString::fromLatin1(inside.data(), inside.size()).split(u',');
    if (numbers.size() != 6)
        throw Failure(QStringLiteral("Respuesta 227 sin dirección"));
    Endpoint endpoint;
    for (qsizetype i = 0; i < 4; ++i)
        endpoint.host += (i ? QStringLiteral(".") : QString()) + numbers[i].trimmed();
    // The two bytes of the port; larger numbers would overflow the product.
    const qint64 high = leadingNumber(numbers[4]);
    const qint64 low = leadingNumber(numbers[5]);
    if (high < 0 || high > 255 || low < 0 || low > 255)
        throw Failure(QStringLiteral("Puerto de datos incorrecto"));
    endpoint.port = quint16(high * 256 + low);
    return endpoint;
}

quint16 extendedPassivePort(QByteArrayView line)
{
    const qsizetype open = line.indexOf("(|||");
    const qsizetype close = open < 0 ? -1 : line.indexOf("|)", open + 4);
    if (close < 0)
        throw Failure(QStringLiteral("Respuesta 229 sin puerto"));
    const QByteArrayView digits = line.sliced(open + 4, close - open - 4);
    bool ok = false;
    const uint port = QString::fromLatin1(digits.data(), digits.size()).toUInt(&ok);
    if (!ok || port == 0 || port > 65535)
        throw Failure(QStringLiteral("Puerto de datos incorrecto"));
    return quint16(port);
}

bool announcesInsideAddress(const QString &announced, const QString &peer)
{
    const QHostAddress address(announced);
    const QHostAddress control(peer);
    if (address.isNull() || address == QHostAddress(QHostAddress::AnyIPv4))
        return true;
    // Over IPv6 the control connection's peer is the only address there is.
    if (control.protocol() == QAbstractSocket::IPv6Protocol && !control.toIPv4Address())
        return true;
    return onPrivateNetwork(address) && !onPrivateNetwork(control);
}

} // namespace Ftp
