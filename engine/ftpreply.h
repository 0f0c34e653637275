#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>

// The pieces of the FTP dialogue.
namespace Ftp {

QByteArray command(const QString &text);

// The replies of a control connection as their lines complete: a line cut between two reads
// waits for the rest, and of a multi-line reply ("NNN-" up to "NNN ") only the last line counts.
class ReplyReader
{
public:
    // The final reply lines that `chunk` completes, in the order they came, without line ends.
    QList<QByteArray> take(QByteArrayView chunk);

private:
    void line(QByteArrayView text, QList<QByteArray> &replies);

    QByteArray m_partial;
    QByteArray m_openCode; // the code of the multi-line reply being read
};

// The leading number of the first three characters; 0 when there is none.
int replyCode(QByteArrayView line);
// The number after "213 ".
qint64 sizeOf(QByteArrayView line);
// The folder part of a URL path, decoded: "pub/my%20dir/x.zip" gives "/pub/my dir", a file at
// the root "/".
QString directoryOf(const QString &path);
// The file's name on the server: the last part of the path, decoded ("canci%C3%B3n.mp3" is
// "canción.mp3").
QString remoteName(const QString &path);

struct Endpoint
{
    QString host;
    quint16 port = 0;
};
// The address in a 227 reply, "(h1,h2,h3,h4,p1,p2)"; throws Failure when it has none.
Endpoint passiveEndpoint(QByteArrayView line);
// The port of a 229 reply, "(|||port|)"; throws Failure when it has none.
quint16 extendedPassivePort(QByteArrayView line);
// Whether a data connection should go to the control connection's peer instead of the address
// a 227 reply names: 0.0.0.0, or an address of a private network while the peer is not on one
// (a server behind a router naming its inside address).
bool announcesInsideAddress(const QString &announced, const QString &peer);

} // namespace Ftp
