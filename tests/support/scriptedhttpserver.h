#pragma once

#include <QRegularExpression>
#include <QSslServer>
#include <QTcpSocket>
#include <QTimer>
#include <functional>
#include <memory>

// What the server sends back for one request.
struct HttpReply
{
    QByteArray bytes = {};
    qint64 dropAfter = -1;         // close once this many bytes are sent
    bool stall = false;            // after sending, keep the connection open and silent
    QList<QByteArray> chunks = {}; // instead of `bytes`: sent one by one, a little apart
    int gapMs = 40;                // between two of the chunks
    int delayMs = 0;               // before anything is sent

    static HttpReply of(QByteArray bytes) { return HttpReply{.bytes = std::move(bytes)}; }
};

// An HTTP server on 127.0.0.1 that records every request byte for byte and answers each with
// what the test's handler returns; over TLS when given a certificate and key in `tls`.
class ScriptedHttpServer final : public QObject
{
public:
    using Handler = std::function<HttpReply(const QByteArray &request, int index)>;

    explicit ScriptedHttpServer(Handler handler, const QSslConfiguration &tls = {},
                                const QHostAddress &address = QHostAddress::LocalHost)
        : m_handler(std::move(handler))
    {
        if (tls.isNull()) {
            m_server = std::make_unique<QTcpServer>();
        } else {
            auto server = std::make_unique<QSslServer>();
            server->setSslConfiguration(tls);
            m_server = std::move(server);
        }
        m_server->listen(address, 0);
        // Every connection counts, also one whose handshake fails and so never becomes pending.
        connect(m_server.get(), &QTcpServer::newConnection, this, [this] { ++m_connections; });
        connect(m_server.get(), &QTcpServer::pendingConnectionAvailable, this, [this] {
            while (QTcpSocket *socket = m_server->nextPendingConnection()) {
                socket->setParent(this);
                // Each write leaves at once, so pieces sent apart arrive apart.
                socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
                connect(socket, &QTcpSocket::readyRead, this, [this, socket] { read(socket); });
                connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
            }
        });
    }

    QString url(const QString &path) const
    {
        const QHostAddress host = m_server->serverAddress();
        return QStringLiteral("%1://%2:%3/%4")
            .arg(qobject_cast<QSslServer *>(m_server.get()) ? QStringLiteral("https")
                                                            : QStringLiteral("http"),
                 host.protocol() == QAbstractSocket::IPv6Protocol
                     ? QLatin1Char('[') + host.toString() + QLatin1Char(']')
                     : host.toString())
            .arg(m_server->serverPort())
            .arg(path);
    }
    const QList<QByteArray> &requests() const { return m_requests; }
    // Connections opened, also those that never sent a request.
    int connections() const { return m_connections; }

    // The start of the Range line of a request, 0 without one.
    static qint64 rangeStart(const QByteArray &request)
    {
        static const QRegularExpression range(QStringLiteral("Range: bytes=(\\d+)-"));
        return range.match(QString::fromLatin1(request)).captured(1).toLongLong();
    }
    // `content` served as a file: 206 from the asked start when `honourRange`, else 200 whole.
    static HttpReply file(const QByteArray &content, const QByteArray &request, bool honourRange,
                          bool withLength = true)
    {
        const QByteArray body = content.mid(honourRange ? rangeStart(request) : 0);
        QByteArray head = honourRange ? "HTTP/1.1 206 Partial Content\r\n" : "HTTP/1.1 200 OK\r\n";
        if (withLength)
            head += "Content-Length: " + QByteArray::number(body.size()) + "\r\n";
        return HttpReply::of(head + "Connection: close\r\n\r\n" + body);
    }
    static HttpReply status(const QByteArray &statusLine, const QByteArray &headers = {},
                            const QByteArray &body = {})
    {
        return HttpReply::of(statusLine + "\r\n" + headers + "\r\n" + body);
    }

private:
    // Answers once the head of the request is in.
    void read(QTcpSocket *socket)
    {
        QByteArray received = socket->property("received").toByteArray();
        const bool answered = received.contains("\r\n\r\n");
        socket->setProperty("received", received += socket->readAll());
        if (answered || !received.contains("\r\n\r\n"))
            return;
        m_requests.append(received);
        send(socket, m_handler(received, int(m_requests.size()) - 1));
    }

    void send(QTcpSocket *socket, HttpReply reply)
    {
        if (reply.delayMs > 0) {
            const int delay = std::exchange(reply.delayMs, 0);
            QTimer::singleShot(delay, socket, [this, socket, reply] { send(socket, reply); });
        } else if (!reply.chunks.isEmpty()) {
            // One piece now, the rest a gap later: timers of a second or more are coarse, so
            // pieces scheduled all at once could overtake each other.
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

    std::unique_ptr<QTcpServer> m_server;
    Handler m_handler;
    QList<QByteArray> m_requests;
    int m_connections = 0;
};
