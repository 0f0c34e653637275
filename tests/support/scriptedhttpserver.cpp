#include "scriptedhttpserver.h"

#include <QRegularExpression>
#include <QSslServer>
#include <QTcpSocket>
#include <QTimer>

ScriptedHttpServer::ScriptedHttpServer(Handler handler, QObject *parent)
    : QObject(parent), m_server(std::make_unique<QTcpServer>()), m_handler(std::move(handler))
{
    listen();
}

ScriptedHttpServer::ScriptedHttpServer(Handler handler, const QSslConfiguration &tls,
                                       QObject *parent)
    : QObject(parent), m_scheme(QStringLiteral("https")), m_handler(std::move(handler))
{
    auto server = std::make_unique<QSslServer>();
    server->setSslConfiguration(tls);
    m_server = std::move(server);
    listen();
}

void ScriptedHttpServer::listen()
{
    m_server->listen(QHostAddress::LocalHost, 0);
    // Every connection is counted, also one whose handshake fails and so never becomes pending.
    connect(m_server.get(), &QTcpServer::newConnection, this, [this] { ++m_connections; });
    connect(m_server.get(), &QTcpServer::pendingConnectionAvailable, this,
            &ScriptedHttpServer::accept);
}

QString ScriptedHttpServer::url(const QString &path) const
{
    return QStringLiteral("%1://127.0.0.1:%2/%3").arg(m_scheme).arg(port()).arg(path);
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
    while (QTcpSocket *socket = m_server->nextPendingConnection()) {
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
    if (reply.delayMs > 0) {
        HttpReply later = reply;
        later.delayMs = 0;
        QTimer::singleShot(reply.delayMs, socket, [this, socket, later] { send(socket, later); });
        return;
    }
    if (reply.closeAtOnce) {
        socket->disconnectFromHost();
        return;
    }
    if (!reply.chunks.isEmpty()) {
        // One piece now, the rest a gap later: timers of a second or more are coarse, so pieces
        // scheduled all at once could overtake each other.
        socket->write(reply.chunks.first());
        socket->flush();
        HttpReply rest = reply;
        rest.chunks.removeFirst();
        rest.delayMs = reply.gapMs;
        send(socket, rest);
        return;
    }
    socket->write(reply.dropAfter >= 0 ? reply.bytes.left(reply.dropAfter) : reply.bytes);
    if (!reply.stall)
        socket->disconnectFromHost();
}
