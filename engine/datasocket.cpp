#include "datasocket.h"

#include "tlstrust.h"

#include <sys/socket.h>

namespace {

// What a secure socket reads and decrypts ahead. It allocates its buffers afresh for every read:
// under the C library's 128 KiB threshold they are reused from the heap, larger ones went back to
// the kernel each time (1 GiB cost 550 000 page faults at 128 KiB and more, 2 400 at 64 KiB,
// and a third less CPU).
constexpr qint64 TlsBuffer = 64 * 1024;

// One thread reads every connection, and each chunk is written before the next read.
QByteArray &sharedBuffer()
{
    static QByteArray buffer(DataSocket::ChunkSize, Qt::Uninitialized);
    return buffer;
}

// A close of our own must not look like a close by the server: no signal leaves the socket.
void closeQuietly(QAbstractSocket &socket)
{
    const QSignalBlocker blocker(socket);
    socket.abort();
}

} // namespace

DataSocket::DataSocket(Receiver &receiver, SpeedLimit &limit, QObject *parent)
    : QObject(parent), m_receiver(receiver), m_limit(limit)
{
    m_resume.setSingleShot(true);
    connect(&m_resume, &QTimer::timeout, this, &DataSocket::readyRead);
    connect(&m_plain, &QTcpSocket::connected, this, [this] { m_receiver.opened(); });
    connect(&m_plain, &QTcpSocket::readyRead, this, &DataSocket::readyRead);
    connect(&m_plain, &QTcpSocket::disconnected, this, &DataSocket::disconnected);
    connect(&m_plain, &QTcpSocket::errorOccurred, this, &DataSocket::error);
}

DataSocket::~DataSocket()
{
    close();
}

void DataSocket::open(const QString &host, quint16 port, bool secure)
{
    close();
    if (!secure) {
        // Unbuffered: a read takes the bytes straight from the kernel into the shared buffer,
        // with no copy kept by the socket.
        m_plain.connectToHost(host, port, QIODevice::ReadWrite | QIODevice::Unbuffered);
        return;
    }
    m_tls = new QSslSocket(this);
    m_tls->setSslConfiguration(secureConfiguration());
    m_tls->setReadBufferSize(TlsBuffer);
    connect(m_tls, &QSslSocket::encrypted, this, [this] { m_receiver.opened(); });
    connect(m_tls, &QSslSocket::readyRead, this, &DataSocket::readyRead);
    connect(m_tls, &QSslSocket::disconnected, this, &DataSocket::disconnected);
    connect(m_tls, &QSslSocket::errorOccurred, this, &DataSocket::error);
    m_tls->connectToHostEncrypted(host, port);
}

void DataSocket::close()
{
    m_resume.stop();
    closeQuietly(m_plain);
    if (m_tls) {
        // This may run inside one of the socket's own signals: it goes once that has returned.
        closeQuietly(*m_tls);
        m_tls->disconnect(this);
        m_tls->deleteLater();
        m_tls = nullptr;
    }
    m_lowWater = 1;
}

void DataSocket::write(const QByteArray &bytes)
{
    socket().write(bytes);
}

void DataSocket::gather(qint64 bytes)
{
    const qintptr descriptor = socket().socketDescriptor();
    const int low = int(std::clamp<qint64>(bytes, 1, ChunkSize));
    if (low == m_lowWater || descriptor < 0)
        return;
    m_lowWater = low;
    ::setsockopt(int(descriptor), SOL_SOCKET, SO_RCVLOWAT, &low, sizeof low);
}

// While data streams in, the kernel gathers a good part of a chunk before it wakes the socket;
// never more than the bytes still expected, and the silence count lowers it again every second,
// so the bytes of a slow server never wait long.
void DataSocket::streamed(qint64 received, qint64 left)
{
    constexpr qint64 Gather = ChunkSize / 2;
    const qint64 bytes = received >= Gather ? Gather : 1;
    gather(left >= 0 ? std::clamp<qint64>(left, 1, bytes) : bytes);
}

QString DataSocket::errorString() const
{
    return socket().errorString();
}

QList<QSslError> DataSocket::certificateErrors() const
{
    return m_tls ? m_tls->sslHandshakeErrors() : QList<QSslError>();
}

void DataSocket::readyRead()
{
    if (!m_tls) {
        readChunk();
        return;
    }
    // A secure socket signals for every few kilobytes it decrypts, and not again for what it
    // keeps: its bytes are taken once it has decrypted all that arrived, in large chunks.
    if (!m_tlsReadQueued) {
        m_tlsReadQueued = true;
        QMetaObject::invokeMethod(this, &DataSocket::readTls, Qt::QueuedConnection);
    }
}

void DataSocket::readTls()
{
    m_tlsReadQueued = false;
    const QPointer<QSslSocket> reading = m_tls;
    while (reading && reading == m_tls && m_tls->bytesAvailable() > 0 && readChunk()) {
    }
}

// An unbuffered socket learns of a close or a reset from the read itself, and then is left
// unconnected without a signal. One that is not read is not woken again until it is.
bool DataSocket::readChunk(bool unlimited)
{
    QByteArray &buffer = sharedBuffer();
    const qint64 wanted = unlimited ? buffer.size() : m_limit.wholeRead(buffer.size());
    const qint64 allowed = unlimited ? wanted : m_limit.take(wanted);
    if (allowed < wanted) {
        m_limit.giveBack(allowed);
        if (!m_resume.isActive())
            m_resume.start(m_limit.waitMs(ChunkSize));
        return false;
    }
    const qint64 received = socket().read(buffer.data(), allowed);
    if (!unlimited)
        m_limit.giveBack(allowed - std::max<qint64>(received, 0));
    if (received < 0 && socket().state() == QAbstractSocket::UnconnectedState) {
        if (socket().error() == QAbstractSocket::RemoteHostClosedError)
            disconnected();
        else
            error(socket().error());
        return false;
    }
    if (received <= 0)
        return false;
    m_receiver.received(QByteArrayView(buffer.constData(), received));
    return true;
}

void DataSocket::disconnected()
{
    // The plain socket is unbuffered: it sees the close only once every byte before it was read.
    // A secure one may still hold decrypted bytes; they may end the download.
    if (const QPointer<QSslSocket> reading = m_tls) {
        // What is left of a closed connection is taken at once, limit or not.
        while (reading == m_tls && m_tls->bytesAvailable() > 0 && readChunk(true)) {
        }
        if (reading != m_tls)
            return;
    }
    m_receiver.closedByPeer();
}

void DataSocket::error(QAbstractSocket::SocketError error)
{
    // A close by the server is reported as an error too; the close handler deals with it.
    if (error != QAbstractSocket::RemoteHostClosedError)
        m_receiver.failed(error);
}
