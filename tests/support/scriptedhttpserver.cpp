#include "scriptedhttpserver.h"

#include <QRegularExpression>
#include <QSslServer>
#include <QTcpSocket>
#include <QTimer>

ScriptedHttpServer::ScriptedHttpServer(Handler handler, QObject *parent)
    : ScriptedHttpServer(std::move(handler), QSslConfiguration(), parent)
{}

ScriptedHttpServer::ScriptedHttpServer(Handler handler, const QSslConfiguration &tls,
                                       QObject *parent)
    : QObject(parent), m_handler(std::move(handler))
{
    if (tls.isNull()) {
        m_server = std::make_unique<QTcpServer>();
    } else {
        auto server = std::make_unique<QSslServer>();
        server->setSslConfiguration(tls);
        m_server = std::move(server);
    }
    m_server->listen(QHostAddress::LocalHost, 0);
    // Every connection is counted, also one whose handshake fails and so never becomes pending.
    connect(m_server.get(), &QTcpServer::newConnection, this, [this] { ++m_connections; });
    connect(m_server.get(), &QTcpServer::pendingConnectionAvailable, this, [this] {
        while (QTcpSocket *socket = m_server->nextPendingConnection()) {
            socket->setParent(this);
            // Each write leaves at once, so pieces sent apart arrive apart.
            socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] {
                QByteArray received = socket->property("received").toByteArray();
                const bool answered = received.contains("\r\n\r\n");
                received += socket->readAll();
                socket->setProperty("received", received);
                if (answered || !received.contains("\r\n\r\n"))
                    return;
                m_requests.append(received);
                send(socket, m_handler(received, int(m_requests.size()) - 1));
            });
            connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        }
    });
}

QString ScriptedHttpServer::url(const QString &path) const
{
    return QStringLiteral("%1://127.0.0.1:%2/%3")
        .arg(qobject_cast<QSslServer *>(m_server.get()) ? QStringLiteral("https")
                                                        : QStringLiteral("http"))
        .arg(port())
        .arg(path);
}

qint64 ScriptedHttpServer::rangeStart(const QByteArray &request)
{
    static const QRegularExpression range(QStringLiteral("Range: bytes=(\\d+)-"));
    return range.match(QString::fromLatin1(request)).captured(1).toLongLong();
}

HttpReply ScriptedHttpServer::file(const QByteArray &content, const QByteArray &request,
                                   bool honourRange, bool withLength)
{
    const QByteArray body = content.mid(honourRange ? rangeStart(request) : 0);
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

void ScriptedHttpServer::send(QTcpSocket *socket, HttpReply reply)
{
    if (reply.delayMs > 0) {
        const int delay = std::exchange(reply.delayMs, 0);
        QTimer::singleShot(delay, socket, [this, socket, reply] { send(socket, reply); });
    } else if (!reply.chunks.isEmpty()) {
        // One piece now, the rest a gap later: timers of a second or more are coarse, so pieces
        // scheduled all at once could overtake each other.
        socket->write(reply.chunks.takeFirst());
        socket->flush();
        reply.delayMs = reply.gapMs;
        send(socket, reply);
    } else {
        socket->write(reply.dropAfter >= 0 ? reply.bytes.left(reply.dropAfter) : reply.bytes);
        if (!reply.stall)
            socket->disconnectFromHost();
    }
}
