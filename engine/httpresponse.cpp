#include "httpresponse.h"

#include "failure.h"
#include "textfile.h"

#include <QList>
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
    QByteArray bytes = QByteArrayLiteral("GET /") + request.path.toUtf8() +
                       QByteArrayLiteral(" HTTP/1.1\r\nUser-Agent: Corvane\r\nHost: ") +
                       request.host.toUtf8() +
                       QByteArrayLiteral("\r\nConnection: close\r\nRange: bytes=") +
                       QByteArray::number(request.rangeStart) + QByteArrayLiteral("-\r\n");
    const auto optional = [&bytes](QByteArrayView name, const QString &value) {
        if (!value.isEmpty() && !value.contains(QLatin1Char('\r')) &&
            !value.contains(QLatin1Char('\n')))
            bytes += name + QByteArrayLiteral(": ") + value.toUtf8() + QByteArrayLiteral("\r\n");
    };
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

QString location(QByteArrayView chunk)
{
    static const QByteArrayView Name("Location: ");
    const qsizetype at = chunk.indexOf(Name);
    if (at < 0)
        return QString();
    const qsizetype from = at + Name.size();
    QByteArrayView address = part(chunk, from, valueEnd(chunk, from) - from);
    // The value may run past a lone CR or LF to the CR LF of a later line; the address is kept
    // in the list files, where a line break would split its download in two.
    const auto lineBreak =
        std::find_if(address.begin(), address.end(), [](char c) { return c == '\r' || c == '\n'; });
    address.truncate(lineBreak - address.begin());
    return QString::fromUtf8(address.data(), address.size());
}

bool isChunked(QByteArrayView chunk)
{
    static const QByteArray Name("transfer-encoding:");
    const QByteArray head = chunk.first(bodyStart(chunk)).toByteArray();
    for (const QByteArray &line : head.split('\n')) {
        const QByteArray lowered = line.trimmed().toLower();
        if (lowered.startsWith(Name))
            return lowered.sliced(Name.size()).trimmed().endsWith("chunked");
    }
    return false;
}

} // namespace Http
