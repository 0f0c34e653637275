// The FTP control connection of a transfer. Replies drive the dialogue; the file arrives on
// `ws`, whose close by the server ends the download.
#include "ftptransfer.h"

#include "failure.h"
#include "ftplogin.h"
#include "ftpreply.h"
#include "urls.h"

#include <QPointer>

namespace {

// A download saved without its credentials (they were not to be remembered) comes back with an
// empty user name; it logs in as one added by quick add does.
FtpCredentials loginOf(const DownloadSlot &slot)
{
    if (slot.usernm.isEmpty())
        return FtpCredentials();
    return FtpCredentials{slot.usernm, slot.passw, false};
}

// A close of our own must not look like a close by the server: no signal leaves the socket.
void closeQuietly(QAbstractSocket &socket)
{
    const QSignalBlocker blocker(socket);
    socket.abort();
}

} // namespace

FtpTransfer::FtpTransfer(DownloadSlot &slot, TransferEvents &events, const TransferContext &context,
                         int retries)
    : Transfer(slot, events, context, retries), m_host(HostOf(slot.Data, context.desktop)),
      m_port(PortOf(slot.Data))
{
    connect(&m_ftp, &QTcpSocket::connected, this, &FtpTransfer::controlConnected);
    connect(&m_ftp, &QTcpSocket::readyRead, this, &FtpTransfer::controlReadyRead);
    connect(&m_ftp, &QTcpSocket::disconnected, this, &FtpTransfer::controlClosed);
    connect(&m_ftp, &QTcpSocket::errorOccurred, this, &FtpTransfer::controlError);
}

void FtpTransfer::start()
{
    attempt();
    m_replies = Ftp::ReplyReader();
    m_sent.clear();
    m_ftp.connectToHost(m_host, m_port);
}

void FtpTransfer::closeConnections()
{
    closeWs();
    closeQuietly(m_ftp);
}

void FtpTransfer::received(QByteArrayView chunk)
{
    try {
        writePayload(chunk);
    } catch (const Failure &failure) {
        // A write that failed (a full disk, a file taken away) ends this connection.
        dropAndRetry(failure.description());
    }
}

void FtpTransfer::send(const QString &text)
{
    m_sent.append(text.section(QLatin1Char(' '), 0, 0).toLatin1());
    m_ftp.write(Ftp::command(text));
}

void FtpTransfer::controlConnected()
{
    m_slot.ftpestado = QStringLiteral("FTP");
    // Only this attempt's answer to "REST 0" may allow a resume: a server that accepted it last
    // time and refuses it now must not have its file continued at the old length.
    m_slot.allowredo = false;
    m_slot.tiempoinicio = m_slot.tiempo;
    attempt();
    setStatus(DownloadStatus::Running);
    try {
        m_file.open(m_slot.path);
    } catch (const Failure &failure) {
        // The download then waits for the silence count to try again.
        m_events.message(failure.description());
    }
}

void FtpTransfer::controlReadyRead()
{
    // Replies may come several in one read (a pipelined "REST 0" and "SIZE") or one cut across
    // reads: each is handled once its line is whole, in the order they came.
    const QPointer<FtpTransfer> alive(this);
    for (const QByteArray &line : m_replies.take(m_ftp.readAll())) {
        reply(line);
        if (!alive || !m_ftp.isOpen())
            return;
    }
}

void FtpTransfer::reply(const QByteArray &line)
{
    DownloadSlot &s = m_slot;
    const int code = Ftp::replyCode(line);
    // A preliminary reply (1xx) leaves its command waiting for the final one.
    const QByteArray answered =
        code >= 200 && !m_sent.isEmpty() ? m_sent.takeFirst() : QByteArray();
    if ((code == 550 || code == 553) &&
        (answered == "CWD" || answered == "SIZE" || answered == "RETR"))
        return failFinally(QStringLiteral("El archivo ") + s.Data + QStringLiteral(" no existe."));
    if (answered == "EPSV" && code >= 500)
        return send(QStringLiteral("PASV"));
    const FtpCredentials login = loginOf(s);
    const QString path = PathOf(s.Data);
    // The tests follow one another on the same reply; an earlier one can set up a later one.
    if (code == 220)
        send(QStringLiteral("USER ") + login.usernm);
    if (code == 331)
        send(QStringLiteral("PASS ") + login.passw);
    if (code == 230) {
        // Binary mode first: servers start in ASCII, where many refuse SIZE and REST and some
        // rewrite line ends. Its 200 reply matches no test below.
        send(QStringLiteral("TYPE I"));
        send(QStringLiteral("CWD ") + Ftp::directoryOf(path));
    }
    if (code == 250) {
        send(QStringLiteral("REST 0"));
        s.ftpestado = QStringLiteral("REST");
    }
    if (code == 350)
        s.allowredo = true;
    if (s.ftpestado == QLatin1String("REST")) {
        // Sent right behind "REST 0", without waiting for its reply.
        send(QStringLiteral("SIZE ") + Ftp::remoteName(path));
        s.ftpestado = QStringLiteral("GETSIZE");
    }
    try {
        if (code == 213) {
            s.total = Ftp::sizeOf(line);
            // Here `bytes` is the length on disk, one less than the next position: the data
            // handler writes at the file's position, wherever that is.
            s.bytes = m_file.length();
            m_file.reserve(s.total);
            if (s.allowredo) {
                send(QStringLiteral("REST ") + QString::number(s.bytes));
                m_file.seek(s.bytes + 1);
            }
            s.bytesinicio = m_file.position();
            // Over IPv6 a 227 reply cannot name an address: the extended form comes first.
            const bool ipv6 = m_ftp.peerAddress().protocol() == QAbstractSocket::IPv6Protocol;
            send(ipv6 ? QStringLiteral("EPSV") : QStringLiteral("PASV"));
        }
        if (code == 227 || code == 229) {
            const QString peer = m_ftp.peerAddress().toString();
            Ftp::Endpoint data;
            if (code == 229)
                data = Ftp::Endpoint{peer, Ftp::extendedPassivePort(line)};
            else
                data = Ftp::passiveEndpoint(line);
            if (Ftp::announcesInsideAddress(data.host, peer))
                data.host = peer;
            m_ws.open(data.host, data.port, false);
            send(QStringLiteral("RETR ") + Ftp::remoteName(path));
        }
    } catch (const Failure &) {
        // A reply that cannot be used is ignored like any unknown one.
    }
    if (code == 530)
        loginRefused();
}

void FtpTransfer::loginRefused()
{
    const QPointer<FtpTransfer> alive(this);
    const std::optional<FtpCredentials> answer = m_context.login.askAgain(loginOf(m_slot));
    // The download may have been removed while the person answered.
    if (!answer || !alive || stopped())
        return;
    m_slot.usernm = answer->usernm;
    m_slot.passw = answer->passw;
    m_slot.rememb = answer->rememb;
    closeConnections();
    m_file.close();
    armRedo();
    setStatus(DownloadStatus::Connecting);
}

void FtpTransfer::controlClosed()
{
    m_file.close();
}

void FtpTransfer::controlError(QAbstractSocket::SocketError error)
{
    if (error == QAbstractSocket::RemoteHostClosedError)
        return;
    m_events.message(m_ftp.errorString());
    closeQuietly(m_ftp);
    m_file.close();
    armRedo();
}
