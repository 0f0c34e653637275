#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

// The pieces of an HTTP exchange, taken from one received chunk with plain searches. Functions
// that need a line end throw Failure when the chunk has none.
namespace Http {

QByteArray request(const QString &path, const QString &host, qint64 rangeStart);

// A chunk that begins with "HTTP/1." is a response head, wherever it arrives.
bool isHead(QByteArrayView chunk);
// The number in characters 10 to 12 ("HTTP/1.1 206 ..." gives 206); 0 when there is none.
int statusCode(QByteArrayView chunk);
// -1 when the chunk has no Content-Length line (searched without regard to case).
qint64 contentLength(QByteArrayView chunk);
// Where the payload starts: after CR LF CR LF, else after LF LF, else 0 (the whole chunk).
qsizetype bodyStart(QByteArrayView chunk);
// The address of a "Location: " line, up to its first line break; empty when there is none.
QString location(QByteArrayView chunk);
// The head, up to its blank line, has a Transfer-Encoding line (any letter case) that ends in
// "chunked". A head without a blank line is written whole, so it never is.
bool isChunked(QByteArrayView chunk);

} // namespace Http
