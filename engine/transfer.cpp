#include "transfer.h"

#include "activelist.h"
#include "downloadrow.h"
#include "downloadslot.h"
#include "failure.h"
#include "settings.h"
#include "tlstrust.h"
#include "urls.h"

#include <algorithm>
#include <sys/socket.h>

namespace {

// What a secure socket reads and decrypts ahead. It allocates its buffers afresh for every read:
// under the C library's 128 KiB threshold they are reused from the heap, larger ones went back to
// the kernel each time (1 GiB cost 550 000 page faults at 128 KiB and more, 2 400 at 64 KiB,
// and a third less CPU).
constexpr qint64 TlsBuffer = 64 * 1024;

// A close of our own must not look like a close by the server: no signal leaves the socket.
void closeQuietly(QAbstractSocket &socket)
{
    const QSignalBlocker blocker(socket);
    socket.abort();
}

} // namespace

Transfer::Transfer(ActiveList &list, int index, int retries)
    : m_list(list), m_index(index), m_redoTag(retries)
{
    m_redo.setSingleShot(false);
    connect(&m_redo, &QTimer::timeout, this, &Transfer::redoTick);
    connect(&m_ws, &QTcpSocket::connected, this, &Transfer::wsConnected);
    connect(&m_ws, &QTcpSocket::readyRead, this, &Transfer::wsReadyRead);
    connect(&m_ws, &QTcpSocket::disconnected, this, &Transfer::wsClosedByPeer);
    connect(&m_ws, &QTcpSocket::errorOccurred, this, &Transfer::wsError);
    connect(&m_ftp, &QTcpSocket::connected, this, &Transfer::ftpConnected);
    connect(&m_ftp, &QTcpSocket::readyRead, this, &Transfer::ftpReadyRead);
    connect(&m_ftp, &QTcpSocket::disconnected, this, &Transfer::ftpClosedByPeer);
    connect(&m_ftp, &QTcpSocket::errorOccurred, this, &Transfer::ftpError);
}

DownloadSlot &Transfer::slot()
{
    return m_list.slotAt(m_index);
}

DownloadRow &Transfer::row()
{
    return *m_list.rowAt(m_index);
}

bool Transfer::aim()
{
    aimWs(slot().Data);
    m_ftpHost = m_wsHost;
    m_ftpPort = m_wsPort;
    return m_wsHost != HostError;
}

void Transfer::aimWs(const QString &address)
{
    m_wsPort = PortOf(address);
    m_wsHost = HostOf(address, m_list.desktop());
    m_wsPath = PathOf(address);
    m_wsSecure = address.startsWith(QLatin1String("https://"));
}

void Transfer::start()
{
    const QString &address = slot().Data;
    if (address.startsWith(QLatin1String("http://")) ||
        address.startsWith(QLatin1String("https://"))) {
        connectHttp();
    } else if (address.startsWith(QLatin1String("ftp://"))) {
        m_sindatos = 0;
        m_ftp.connectToHost(m_ftpHost, m_ftpPort);
    }
}

void Transfer::stop()
{
    m_redo.stop();
    closeWs();
    closeFtp();
    m_file.close();
}

void Transfer::connectHttp()
{
    // A connection that has only just been asked for is never judged silent: the count starts
    // again here, and once more when the connection opens.
    m_sindatos = 0;
    if (m_wsSecure)
        openTls(m_wsHost, m_wsPort);
    else
        openWs(m_wsHost, m_wsPort);
}

// Unbuffered: a read takes the bytes straight from the kernel into the shared buffer, with no
// copy kept by the socket.
void Transfer::openWs(const QString &host, quint16 port)
{
    m_ws.connectToHost(host, port, QIODevice::ReadWrite | QIODevice::Unbuffered);
}

// The request goes out once the server has proved who it is: `encrypted` stands for `connected`.
void Transfer::openTls(const QString &host, quint16 port)
{
    m_tls = new QSslSocket(this);
    m_tls->setSslConfiguration(secureConfiguration());
    m_tls->setReadBufferSize(TlsBuffer);
    connect(m_tls, &QSslSocket::encrypted, this, &Transfer::wsConnected);
    connect(m_tls, &QSslSocket::readyRead, this, &Transfer::wsReadyRead);
    connect(m_tls, &QSslSocket::disconnected, this, &Transfer::wsClosedByPeer);
    connect(m_tls, &QSslSocket::errorOccurred, this, &Transfer::wsError);
    m_tls->connectToHostEncrypted(host, port);
}

void Transfer::closeWs()
{
    closeQuietly(m_ws);
    if (m_tls) {
        // This may run inside one of the socket's own signals: it goes once that has returned.
        closeQuietly(*m_tls);
        m_tls->disconnect(this);
        m_tls->deleteLater();
        m_tls = nullptr;
    }
    m_chunked = false;
    m_lowWater = 1;
}

// While data streams in, the kernel is asked to gather a good part of a chunk before it wakes
// the socket: fewer, larger reads and writes. Never more than the bytes still expected, and the
// silence count lowers it again every second, so bytes of a slow server never wait long; a close
// always wakes the socket.
void Transfer::gatherAfter(qint64 lastRead)
{
    constexpr qint64 Gather = ActiveList::ReceiveChunk / 2;
    const DownloadSlot &s = slot();
    qint64 bytes = lastRead >= Gather ? Gather : 1;
    if (s.total != 0)
        bytes = std::clamp<qint64>(s.total - (s.bytes - 1), 1, bytes);
    setLowWater(int(bytes));
}

void Transfer::setLowWater(int bytes)
{
    const qintptr descriptor = ws().socketDescriptor();
    if (bytes == m_lowWater || descriptor < 0)
        return;
    m_lowWater = bytes;
    ::setsockopt(int(descriptor), SOL_SOCKET, SO_RCVLOWAT, &bytes, sizeof bytes);
}

void Transfer::closeFtp()
{
    closeQuietly(m_ftp);
}

void Transfer::armRedo()
{
    m_redo.setInterval(m_list.settings().segsv * 1000);
    m_redo.start();
}

void Transfer::redoTick()
{
    m_redo.stop();
    --m_redoTag;
    if (m_redoTag >= 0) {
        closeWs();
        closeFtp();
        m_file.close();
        row().setReconectando(true);
        start();
        return;
    }
    m_list.retriesExhausted(m_index);
}

void Transfer::countSilence()
{
    setLowWater(1);
    ++m_sindatos;
    // A retry already waiting is left to run: starting it again would restart its countdown.
    if (m_sindatos > m_list.settings().waitv && !row().redoend() && !m_redo.isActive()) {
        closeWs();
        m_file.close();
        armRedo();
    }
}
