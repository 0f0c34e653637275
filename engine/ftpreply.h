#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

// The pieces of the FTP dialogue, taken from one received chunk of the control connection.
namespace Ftp {

QByteArray command(const QString &text);

// The last complete line of a chunk; text after the last carriage return is dropped, nothing is
// kept for the next chunk.
QByteArray lastLine(QByteArrayView chunk);
// The leading number of the first three characters; 0 when there is none.
int replyCode(QByteArrayView line);
// The number after "213 ".
qint64 sizeOf(QByteArrayView line);
// The folder part of a URL path: "pub/tools/x.zip" gives "/pub/tools", "x.zip" gives "".
QString directoryOf(const QString &path);

struct Endpoint
{
    QString host;
    quint16 port = 0;
};
// The address in a 227 reply, "(h1,h2,h3,h4,p1,p2)"; throws Failure when it has none.
Endpoint passiveEndpoint(QByteArrayView line);

} // namespace Ftp
