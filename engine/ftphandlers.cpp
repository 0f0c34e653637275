// The FTP control connection of a transfer. Replies drive the dialogue; the file arrives on
// `ws`, whose handlers write it and see the end of the download when the server closes it.
#include "activelist.h"
#include "desktop.h"
#include "downloadrow.h"
#include "downloadslot.h"
#include "failure.h"
#include "ftpreply.h"
#include "settings.h"
#include "transfer.h"
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

} // namespace

void Transfer::ftpSend(const QString &text)
{
    m_ftp.write(Ftp::command(text));
}

void Transfer::ftpConnected()
{
    DownloadSlot &s = slot();
    s.ftpestado = QStringLiteral("FTP");
    // Only this attempt's answer to "REST 0" may allow a resume: a server that accepted it last
    // time and refuses it now must not have its file continued at the old length.
    s.allowredo = false;
    s.tiempoinicio = s.tiempo;
    m_sindatos = 0;
    row().setReconectando(false);
    try {
        m_file.open(s.path);
    } catch (const Failure &) {
        // The download then waits for the silence timer to try again.
    }
}

void Transfer::ftpReadyRead()
{
    DownloadSlot &s = slot();
    const QByteArray line = Ftp::lastLine(m_ftp.readAll());
    const int code = Ftp::replyCode(line);
    const FtpCredentials login = loginOf(s);
    // The tests follow one another on the same reply; an earlier one can set up a later one.
    if (code == 220)
        ftpSend(QStringLiteral("USER ") + login.usernm);
    if (code == 331)
        ftpSend(QStringLiteral("PASS ") + login.passw);
    if (code == 230) {
        // Binary mode first: servers start in ASCII, where many refuse SIZE and REST and some
        // rewrite line ends. Its 200 reply matches no test below.
        ftpSend(QStringLiteral("TYPE I"));
        ftpSend(QStringLiteral("CWD ") + Ftp::directoryOf(PathOf(s.Data)));
    }
    if (code == 250) {
        ftpSend(QStringLiteral("REST 0"));
        s.ftpestado = QStringLiteral("REST");
    }
    if (code == 350)
        s.allowredo = true;
    if (s.ftpestado == QLatin1String("REST")) {
        // Sent right behind "REST 0", without waiting for its reply.
        ftpSend(QStringLiteral("SIZE ") + FileNameOf(s.Data));
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
                ftpSend(QStringLiteral("REST ") + QString::number(s.bytes));
                m_file.seek(s.bytes + 1);
            }
            s.bytesinicio = m_file.position();
            ftpSend(QStringLiteral("PASV"));
        }
        if (code == 227) {
            const Ftp::Endpoint data = Ftp::passiveEndpoint(line);
            closeWs();
            openWs(data.host, data.port);
            ftpSend(QStringLiteral("RETR ") + FileNameOf(s.Data));
        }
    } catch (const Failure &) {
        // A reply that cannot be used is ignored like any unknown one.
    }
    if (code == 530)
        loginRefused();
}

void Transfer::loginRefused()
{
    // One dialog at a time: its caption tells that it is open for another download.
    if (m_list.loginCaption() == WrongUserCaption)
        return;
    m_list.setLoginCaption(WrongUserCaption);
    m_list.notifier().playSound(QStringLiteral("user.wav"));
    DownloadSlot &s = slot();
    const QPointer<Transfer> alive(this);
    // Other downloads keep running while the person answers.
    const FtpCredentials answer = m_list.desktop().askFtpLogin(WrongUserCaption, loginOf(s));
    m_list.setLoginCaption(LoginCaption);
    if (!alive)
        return;
    s.usernm = answer.usernm;
    s.passw = answer.passw;
    s.rememb = answer.rememb;
    closeFtp();
    m_file.close();
    closeWs();
    armRedo();
    row().setReconectando(true);
}

void Transfer::ftpClosedByPeer()
{
    m_file.close();
}

void Transfer::ftpError(QAbstractSocket::SocketError error)
{
    if (error == QAbstractSocket::RemoteHostClosedError)
        return;
    m_list.showStatus(StatusPanel::Mensajes, m_ftp.errorString());
    closeFtp();
    m_file.close();
    armRedo();
}
