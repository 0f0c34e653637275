#pragma once

#include "chunkeddecoder.h"
#include "slotfile.h"

#include <QObject>
#include <QPointer>
#include <QSslSocket>
#include <QTcpSocket>
#include <QTimer>

class ActiveList;
class DownloadRow;
struct DownloadSlot;

// The connections of one active download: the data socket `ws` (HTTP, HTTPS, or FTP data), the
// FTP control socket `ftp`, the retry timer `redo` with its budget, and the open local file.
// Socket events drive everything; the list's timers call in once a second.
class Transfer final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Transfer)

public:
    Transfer(ActiveList &list, int index, int retries);

    // Sets where `ws` and `ftp` connect from the slot's address; false for a bad address.
    bool aim();
    // Opens the connection the address asks for: `ws` for http:// and https://, `ftp` for
    // ftp://.
    void start();
    // Closes both sockets and the file without running any close handler.
    void stop();

    void armRedo();
    bool redoActive() const { return m_redo.isActive(); }
    int redoBudget() const { return m_redoTag; }
    void setRedoBudget(int retries) { m_redoTag = retries; }
    void redoTick();

    int sindatos() const { return m_sindatos; }
    // One more second without data; a stall longer than the setting drops the connection.
    void countSilence();

private:
    DownloadSlot &slot();
    DownloadRow &row();
    // The socket that carries the current data connection.
    QTcpSocket &ws() { return m_tls ? *m_tls : m_ws; }
    void aimWs(const QString &address);
    void connectHttp();
    void openWs(const QString &host, quint16 port);
    void openTls(const QString &host, quint16 port);
    void closeWs();
    void closeFtp();
    void gatherAfter(qint64 lastRead);
    void setLowWater(int bytes);

    // HTTP, and the data connection of FTP.
    void wsConnected();
    void wsReadyRead();
    void readTls();
    bool readChunk();
    void takeChunk(QByteArrayView chunk);
    void wsClosedByPeer();
    void wsEnded();
    void wsError(QAbstractSocket::SocketError error);
    void handleHead(QByteArrayView chunk, qsizetype &payloadStart);
    void writePayload(QByteArrayView payload);
    void writeChunked(QByteArrayView framed);
    void received(qint64 wireBytes);
    void fail(const QString &text);
    void refuseCertificate();
    void redirect(const QString &address);
    void lost();
    void finished();

    // The FTP control connection.
    void ftpConnected();
    void ftpReadyRead();
    void ftpClosedByPeer();
    void ftpError(QAbstractSocket::SocketError error);
    void ftpSend(const QString &text);
    void loginRefused();

    ActiveList &m_list;
    const int m_index;
    QTcpSocket m_ws;
    // The connection of an https:// address, a fresh socket for every attempt; null otherwise.
    QPointer<QSslSocket> m_tls;
    bool m_tlsReadQueued = false;
    QTcpSocket m_ftp;
    QTimer m_redo;
    int m_redoTag;
    SlotFile m_file;
    int m_sindatos = 0;
    int m_lowWater = 1; // bytes the kernel gathers before the socket reads
    QString m_wsHost;
    quint16 m_wsPort = 0;
    QString m_wsPath;
    bool m_wsSecure = false;
    QString m_ftpHost;
    quint16 m_ftpPort = 0;
    qint64 m_requestStart = 1; // where the Range line asked the server to start
    bool m_chunked = false;    // the reply on this connection is chunked
    ChunkedDecoder m_decoder;
    bool m_handled = false; // the current chunk ended the connection
};
