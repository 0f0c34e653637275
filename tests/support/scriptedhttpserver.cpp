#include "scriptedhttpserver.h"

#include <QRegularExpression>
#include <QTcpSocket>
#include <QTimer>

ScriptedHttpServer::ScriptedHttpServer(Handler handler, QObject *parent)
    : QObject(parent), m_handler(std::move(handler))
{
    m_server.listen(QHostAddress::LocalHost, 0);
    connect(&m_server, &QTcpServer::newConnection, this, &ScriptedHttpServer::accept);
}

QString ScriptedHttpServer::url(const QString &path) const
{
    return QStringLiteral("http://127.0.0.1:%1/%2").arg(port()).arg(path);
}

qint64 ScriptedHttpServer::rangeStart(const QByteArray &request)
{
    static const QRegularExpression range(QStringLiteral("Range: bytes=(\\d+)-"));
    const auto match = range.match(QString::fromLatin1(request));
    return match.hasMatch() ? match.captured(1).toLongLong() : 0;
}

HttpReply ScriptedHttpServer::file(const QByteArray &content, const QByteArray &request,
                                   bool honourRange, bool withLength)
{
    const qint64 start = honourRange ? std::min<qint64>(rangeStart(request), content.size()) : 0;
    const QByteArray body = content.mid(start);
    QByteArray head = honourRange ? "HTTP/1.1 206 Partial Content\r\n" : "HTTP/1.1 200 OK\r\n";
    if (withLength)
        head += "Content-Length: " + QByteArray::number(body.size()) + "\r\n";
    return HttpReply::of(head + "Connection: close\r\n\r\n" + body);
}

HttpReply ScriptedHttpServer::status(const QByteArray &statusLine, const QByteArray &headers,
                                     const QByteArray &body)
{
    return HttpReply::of(statusLine + "\r\n" + headers + "\r\n" + body);
}

void ScriptedHttpServer::accept()
{
    while (QTcpSocket *socket = m_server.nextPendingConnection()) {
        socket->setParent(this);
        // Each write leaves at once, so pieces sent apart arrive apart.
        socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        auto *received = new QByteArray;
        connect(socket, &QObject::destroyed, socket, [received] { delete received; });
        connect(socket, &QTcpSocket::readyRead, this, [this, socket, received] {
            const bool complete = received->contains("\r\n\r\n");
            *received += socket->readAll();
            if (complete || !received->contains("\r\n\r\n"))
                return;
            m_requests.append(*received);
            send(socket, m_handler(*received, int(m_requests.size()) - 1));
        });
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    }
}

void ScriptedHttpServer::send(QTcpSocket *socket, const HttpReply &reply)
{
    if (reply.closeAtOnce) {
        socket->disconnectFromHost();
        return;
    }
    const auto finish = [socket, stall = reply.stall] {
        if (!stall)
            socket->disconnectFromHost();
    };
    if (!reply.chunks.isEmpty()) {
        for (qsizetype i = 0; i < reply.chunks.size(); ++i) {
            QTimer::singleShot(int(i) * 40, socket, [socket, chunk = reply.chunks[i]] {
                socket->write(chunk);
                socket->flush();
            });
        }
        QTimer::singleShot(int(reply.chunks.size()) * 40, socket, finish);
        return;
    }
    socket->write(reply.dropAfter >= 0 ? reply.bytes.left(reply.dropAfter) : reply.bytes);
    finish();
}
