#pragma once

#include "slotfile.h"

#include <QObject>
#include <QTcpSocket>
#include <QTimer>

class ActiveList;
class DownloadRow;
struct DownloadSlot;

// The connections of one active download: the data socket `ws` (HTTP, or FTP data), the FTP
// control socket `ftp`, the retry timer `redo` with its budget, and the open local file.
// Socket events drive everything; the list's timers call in once a second.
class Transfer final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Transfer)

public:
    Transfer(ActiveList &list, int index, int retries);

    // Sets where `ws` and `ftp` connect from the slot's address; false for a bad address.
    bool aim();
    // Opens the connection the address asks for: `ws` for http://, `ftp` for ftp://.
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
    void openWs(const QString &host, quint16 port);
    void closeWs();
    void closeFtp();
    void gatherAfter(qint64 lastRead);
    void setLowWater(int bytes);

    // HTTP, and the data connection of FTP.
    void wsConnected();
    void wsReadyRead();
    void wsClosedByPeer();
    void wsEnded();
    void wsError(QAbstractSocket::SocketError error);
    void handleHead(QByteArrayView chunk, qsizetype &payloadStart);
    void writePayload(QByteArrayView payload);
    void fail(const QString &text);
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
    QTcpSocket m_ftp;
    QTimer m_redo;
    int m_redoTag;
    SlotFile m_file;
    int m_sindatos = 0;
    int m_lowWater = 1; // bytes the kernel gathers before the socket reads
    QString m_wsHost;
    quint16 m_wsPort = 0;
    QString m_wsPath;
    QString m_ftpHost;
    quint16 m_ftpPort = 0;
    qint64 m_requestStart = 1; // where the Range line asked the server to start
    bool m_handled = false;    // the current chunk ended the connection
};
