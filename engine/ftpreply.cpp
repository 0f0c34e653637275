#include "ftpreply.h"

#include "failure.h"
#include "textfile.h"

#include <QStringList>

namespace Ftp {

QByteArray command(const QString &text)
{
    return text.toUtf8() + QByteArrayLiteral("\r\n");
}

QByteArray lastLine(QByteArrayView chunk)
{
    QByteArrayView line;
    qsizetype from = 0;
    for (qsizetype cr = chunk.indexOf('\r', from); cr >= 0; cr = chunk.indexOf('\r', from)) {
        line = chunk.sliced(from, cr - from + 1);
        // The character after the carriage return (the line feed) goes with it.
        from = std::min(cr + 2, chunk.size());
    }
    return line.toByteArray();
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
    return directory;
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

} // namespace Ftp
