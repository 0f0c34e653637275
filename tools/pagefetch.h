#pragma once

#include <QObject>
#include <QSslSocket>
#include <QStringDecoder>
#include <QTimer>

class Desktop;

// One web page fetched over a socket of its own (`ws`; TLS for "https://", the certificate
// checked against the system's authorities). The reply, status line and headers included, is
// kept as text with every single quote turned into a double quote, so that quoted attributes
// all look alike to the link scanner. A page that grows past MaxBytes, or takes longer than
// TimeLimitMs, is cut short: the fetch has no silence rule of its own.
class PageFetch final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PageFetch)

public:
    static constexpr qint64 MaxBytes = 16 * 1024 * 1024;
    static constexpr int TimeLimitMs = 120 * 1000;

    explicit PageFetch(QObject *parent = nullptr);

    // The whole request: the path, the host and nothing else the server could do without.
    static QByteArray request(const QString &url);

    // Connects to the address's host. False when HostOf refused the address (the person has
    // been told); throws Failure when its port cannot be read.
    bool start(const QString &url, Desktop &desktop);
    // Closes the connection without reporting anything.
    void stop();
    bool running() const { return m_running; }
    // `code`: what has arrived so far, single quotes made double.
    const QString &code() const { return m_code; }

    // The time limit's handler.
    void timeLimitReached();

Q_SIGNALS:
    // The server closed the connection: the page is complete.
    void finished();
    // The page was cut at a limit; `reason` tells the person which.
    void cutShort(const QString &reason);
    void failed(const QString &description);

private:
    void sendRequest();
    void readArrived();
    void closedByServer();
    void socketError(QAbstractSocket::SocketError error);

    QSslSocket m_ws;
    QTimer m_limit;
    QStringDecoder m_decoder;
    QByteArray m_request;
    QString m_code;
    qint64 m_received = 0;
    bool m_running = false;
};
