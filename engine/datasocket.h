#pragma once

#include "speedlimit.h"

#include <QByteArrayView>
#include <QPointer>
#include <QSslError>
#include <QSslSocket>
#include <QTcpSocket>
#include <QTimer>

// The connection a file's bytes arrive on, plain or over TLS. Reads go without copies into one
// buffer that every connection shares (a chunk is done with before the next read), and while
// data streams in the kernel may be asked to gather a good part of a chunk before it wakes the
// socket: fewer, larger reads and writes. Every read takes its bytes from the speed limit; with
// none left the socket is not read (and so not woken again) until the limit has refilled.
class DataSocket final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(DataSocket)

public:
    // What the owner of the connection is told. Each of these may close the socket.
    class Receiver
    {
    public:
        // Connected; over TLS, once the server has proved who it is.
        virtual void opened() = 0;
        virtual void received(QByteArrayView chunk) = 0;
        // The server closed the connection, after every byte it sent was received.
        virtual void closedByPeer() = 0;
        // Any other end; a close by the server is never reported here.
        virtual void failed(QAbstractSocket::SocketError error) = 0;

    protected:
        ~Receiver() = default;
    };

    // The most one read takes; larger blocks were measured slower.
    static constexpr qint64 ChunkSize = 256 * 1024;

    DataSocket(Receiver &receiver, SpeedLimit &limit, QObject *parent = nullptr);
    ~DataSocket() override;

    void open(const QString &host, quint16 port, bool secure);
    // Closes without telling the receiver.
    void close();
    void write(const QByteArray &bytes);
    // Wakes the socket only once `bytes` have arrived (a close always wakes it).
    void gather(qint64 bytes);
    // After `received` bytes were taken, with `left` still expected (negative: not known).
    void streamed(qint64 received, qint64 left);
    QString errorString() const;
    // Why the server's certificate was refused; empty when it was not.
    QList<QSslError> certificateErrors() const;

private:
    QTcpSocket &socket() { return m_tls ? *m_tls : m_plain; }
    const QTcpSocket &socket() const { return m_tls ? *m_tls : m_plain; }
    void readyRead();
    void readTls();
    // Up to one chunk, within the limit unless `unlimited`; false when nothing was read.
    bool readChunk(bool unlimited = false);
    void disconnected();
    void error(QAbstractSocket::SocketError error);

    Receiver &m_receiver;
    SpeedLimit &m_limit;
    QTimer m_resume; // reads again once the limit has refilled
    QTcpSocket m_plain;
    // The connection of a secure address, a fresh socket for every attempt; null otherwise.
    QPointer<QSslSocket> m_tls;
    bool m_tlsReadQueued = false;
    int m_lowWater = 1;
};
