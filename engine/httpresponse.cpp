#include "httpresponse.h"

#include "failure.h"
#include "textfile.h"

#include <QList>
#include <QRegularExpression>
#include <QUrl>
#include <algorithm>
#include <cctype>

namespace {

const QByteArrayView CrLf("\r\n");
const QByteArrayView LfLf("\n\n");

// The end of a header value: the first CR LF from `from` on, else the first LF LF.
qsizetype valueEnd(QByteArrayView chunk, qsizetype from)
{
    qsizetype end = chunk.indexOf(CrLf, from);
    if (end < 0)
        end = chunk.indexOf(LfLf, from);
    if (end < 0)
        throw Failure(QStringLiteral("Cabecera sin final de línea"));
    return end;
}

// Like QByteArray::mid: clamped to the view, never out of range.
QByteArrayView part(QByteArrayView view, qsizetype from, qsizetype length)
{
    from = std::clamp<qsizetype>(from, 0, view.size());
    return view.sliced(from, std::clamp<qsizetype>(length, 0, view.size() - from));
}

QString numberText(QByteArrayView bytes)
{
    return QString::fromLatin1(bytes.data(), bytes.size());
}

} // namespace

namespace Http {

QByteArray request(const Request &request)
{
    QByteArray bytes =
        QByteArrayLiteral("GET /") + request.path.toUtf8() +
        QByteArrayLiteral(" HTTP/1.1\r\nUser-Agent: Corvane\r\nHost: ") + request.host.toUtf8() +
        QByteArrayLiteral("\r\nConnection: close\r\nRange: bytes=") +
        QByteArray::number(request.rangeStart) + QByteArrayLiteral("-") +
        (request.rangeEnd >= 0 ? QByteArray::number(request.rangeEnd) : QByteArray()) +
        QByteArrayLiteral("\r\n");
    const auto optional = [&bytes](QByteArrayView name, const QString &value) {
        if (!value.isEmpty() && !value.contains(QLatin1Char('\r')) &&
            !value.contains(QLatin1Char('\n')))
            bytes += name + QByteArrayLiteral(": ") + value.toUtf8() + QByteArrayLiteral("\r\n");
    };
    if (!request.user.isEmpty())
        optional("Authorization",
                 QStringLiteral("Basic ") +
                     QString::fromLatin1(
                         (request.user + QLatin1Char(':') + request.password).toUtf8().toBase64()));
    optional("Referer", request.extras.referer);
    optional("Cookie", request.extras.cookie);
    if (request.rangeStart > 0)
        optional("If-Range", request.extras.validator);
    return bytes + QByteArrayLiteral("\r\n");
}

bool isHead(QByteArrayView chunk)
{
    return chunk.startsWith(QByteArrayView("HTTP/1."));
}

int statusCode(QByteArrayView chunk)
{
    return int(leadingNumber(numberText(part(chunk, 9, 3))));
}

qint64 contentLength(QByteArrayView chunk)
{
    static const QByteArrayView Name("content-length: ");
    const auto sameLetter = [](char a, char b) {
        return std::tolower(static_cast<unsigned char>(a)) == static_cast<unsigned char>(b);
    };
    const auto found =
        std::search(chunk.begin(), chunk.end(), Name.begin(), Name.end(), sameLetter);
    if (found == chunk.end())
        return -1;
    const qsizetype at = found - chunk.begin();
    const qsizetype end = valueEnd(chunk, at);
    return leadingNumber(numberText(part(chunk, at + Name.size(), end - at - Name.size())));
}

qsizetype bodyStart(QByteArrayView chunk)
{
    qsizetype at = chunk.indexOf(QByteArrayView("\r\n\r\n"));
    if (at >= 0)
        return at + 4;
    at = chunk.indexOf(LfLf);
    return at >= 0 ? at + 2 : 0;
}

QByteArray header(QByteArrayView chunk, QByteArrayView name)
{
    const QByteArray head = chunk.first(bodyStart(chunk)).toByteArray();
    const QByteArray wanted = name.toByteArray().toLower() + ':';
    for (const QByteArray &line : head.split('\n')) {
        if (line.toLower().startsWith(wanted))
            return line.sliced(wanted.size()).trimmed();
    }
    return {};
}

QString reason(QByteArrayView chunk)
{
    const qsizetype end = chunk.indexOf('\n');
    return QString::fromLatin1(part(chunk, 13, (end < 0 ? chunk.size() : end) - 13)).trimmed();
}

QString location(QByteArrayView chunk)
{
    QByteArray address = header(chunk, "Location");
    // A lone CR inside the line ends the address as well: the address is kept in the list files,
    // where a line break would split its download in two.
    if (const qsizetype cr = address.indexOf('\r'); cr >= 0)
        address.truncate(cr);
    return QString::fromUtf8(address);
}

int retryAfter(QByteArrayView chunk)
{
    const QByteArray value = header(chunk, "Retry-After");
    bool number = false;
    const qint64 seconds = value.toLongLong(&number);
    if (!number || seconds < 0)
        return -1;
    return int(std::min<qint64>(seconds, MaxRetryAfter));
}

qint64 completeLength(QByteArrayView chunk)
{
    const QByteArray value = header(chunk, "Content-Range");
    if (!value.startsWith("bytes */"))
        return -1;
    bool number = false;
    const qint64 length = value.sliced(8).trimmed().toLongLong(&number);
    return number && length >= 0 ? length : -1;
}

ContentRange contentRange(QByteArrayView chunk)
{
    const QByteArray value = header(chunk, "Content-Range");
    static const QRegularExpression Pattern(
        QStringLiteral("^bytes\\s+(\\d+)-(\\d+)/(\\d+|\\*)\\s*$"));
    const QRegularExpressionMatch match = Pattern.match(QString::fromLatin1(value));
    if (!match.hasMatch())
        return {};
    const auto number = [&match](int group) {
        bool ok = false;
        const qint64 value = match.captured(group).toLongLong(&ok);
        return ok ? value : -1;
    };
    ContentRange range{.first = number(1), .last = number(2), .length = number(3)};
    if (range.first < 0 || range.last < range.first)
        return {};
    return range;
}

QByteArray validator(QByteArrayView chunk)
{
    const QByteArray etag = header(chunk, "ETag");
    return etag.isEmpty() ? header(chunk, "Last-Modified") : etag;
}

QString dispositionName(QByteArrayView chunk)
{
    const QByteArray value = header(chunk, "Content-Disposition");
    QString name;
    for (QByteArray parameter : value.split(';')) {
        parameter = parameter.trimmed();
        const QByteArray key = parameter.left(parameter.indexOf('=')).trimmed().toLower();
        QByteArray text = parameter.mid(parameter.indexOf('=') + 1).trimmed();
        if (key == "filename*" && text.toLower().startsWith("utf-8''")) {
            // The encoded form wins over the plain one.
            return QUrl::fromPercentEncoding(text.sliced(7));
        }
        if (key == "filename" && name.isEmpty()) {
            if (text.size() >= 2 && text.startsWith('"') && text.endsWith('"'))
                text = text.sliced(1, text.size() - 2);
            name = QString::fromUtf8(text);
        }
    }
    return name;
}

bool isChunked(QByteArrayView chunk)
{
    return header(chunk, "Transfer-Encoding").toLower().endsWith("chunked");
}

} // namespace Http
