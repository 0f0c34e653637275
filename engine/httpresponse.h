#pragma once

#include "downloadextras.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

// The pieces of an HTTP exchange, taken from one received chunk with plain searches. Functions
// that need a line end throw Failure when the chunk has none.
namespace Http {

// What a download asks for. The first four lines are always sent; the others only when the
// download has them.
struct Request
{
    QString path;
    QString host; // the Host line's value
    qint64 rangeStart = 0;
    qint64 rangeEnd = -1;       // the last byte asked for; none asks for the rest of the file
    DownloadExtras extras = {}; // Referer, Cookie, and If-Range on a resume
    QString user = {};          // with `password`, a Basic Authorization line
    QString password = {};
};
// A value holding a line break would add lines of its own: such a line is left out.
QByteArray request(const Request &request);

// A chunk that begins with "HTTP/1." is a response head, wherever it arrives.
bool isHead(QByteArrayView chunk);
// The number in characters 10 to 12 ("HTTP/1.1 206 ..." gives 206); 0 when there is none.
int statusCode(QByteArrayView chunk);
// -1 when the chunk has no Content-Length line (searched without regard to case).
qint64 contentLength(QByteArrayView chunk);
// Where the payload starts: after CR LF CR LF, else after LF LF, else 0 (the whole chunk).
qsizetype bodyStart(QByteArrayView chunk);
// The value of the head's first line named `name` (in any letter case), without the blanks
// around it; empty when the head has none.
QByteArray header(QByteArrayView chunk, QByteArrayView name);
// What follows the code on the status line ("Forbidden").
QString reason(QByteArrayView chunk);
// The address of the Location line, up to a line break; empty when there is none.
QString location(QByteArrayView chunk);
// The seconds of a Retry-After line, at most MaxRetryAfter; -1 without a usable number.
inline constexpr int MaxRetryAfter = 300;
int retryAfter(QByteArrayView chunk);
// The N of "Content-Range: bytes */N" (the reply to a range past the end); -1 without it.
qint64 completeLength(QByteArrayView chunk);
// What tells this version of the file from another: the ETag, else the Last-Modified date.
QByteArray validator(QByteArrayView chunk);
// The bytes a 206 carries, "Content-Range: bytes first-last/length"; -1 for what it does not say.
struct ContentRange
{
    qint64 first = -1;
    qint64 last = -1;
    qint64 length = -1;
};
ContentRange contentRange(QByteArrayView chunk);
// The file name a Content-Disposition line gives, as sent (the caller makes it safe); empty
// without one.
QString dispositionName(QByteArrayView chunk);
// The head, up to its blank line, has a Transfer-Encoding line (any letter case) that ends in
// "chunked". A head without a blank line is written whole, so it never is.
bool isChunked(QByteArrayView chunk);

} // namespace Http
