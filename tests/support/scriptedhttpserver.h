#pragma once

#include <QList>
#include <QSslConfiguration>
#include <QTcpServer>
#include <functional>
#include <memory>

// What the server sends back for one request.
struct HttpReply
{
    QByteArray bytes;
    qint64 dropAfter = -1;    // close once this many bytes are sent
    bool stall = false;       // after sending, keep the connection open and silent
    QList<QByteArray> chunks; // instead of `bytes`: sent one by one, a little apart
    int gapMs = 40;           // between two of the chunks
    int delayMs = 0;          // before anything is sent

    static HttpReply of(QByteArray bytes)
    {
        HttpReply reply;
        reply.bytes = std::move(bytes);
        return reply;
    }
};

// An HTTP server on 127.0.0.1 that records every request byte for byte and answers each with
// what the test's handler returns; over TLS when given a certificate.
class ScriptedHttpServer final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ScriptedHttpServer)

public:
    using Handler = std::function<HttpReply(const QByteArray &request, int index)>;

    explicit ScriptedHttpServer(Handler handler, QObject *parent = nullptr);
    // The same over TLS, with the certificate and key of `tls`; its addresses are https://.
    ScriptedHttpServer(Handler handler, const QSslConfiguration &tls, QObject *parent = nullptr);

    quint16 port() const { return m_server->serverPort(); }
    QString url(const QString &path) const;
    const QList<QByteArray> &requests() const { return m_requests; }
    // Connections opened, also those that never sent a request.
    int connections() const { return m_connections; }

    // The start of the Range line of a request, 0 without one.
    static qint64 rangeStart(const QByteArray &request);
    // `content` served as a file: 206 from the asked start when `honourRange`, else 200 whole.
    static HttpReply file(const QByteArray &content, const QByteArray &request, bool honourRange,
                          bool withLength = true);
    static HttpReply status(const QByteArray &statusLine, const QByteArray &headers = {},
                            const QByteArray &body = {});

private:
    void send(class QTcpSocket *socket, HttpReply reply);

    std::unique_ptr<QTcpServer> m_server;
    Handler m_handler;
    QList<QByteArray> m_requests;
    int m_connections = 0;
};
