// How an HTTP connection ends: the download finished, the connection lost (a retry follows), a
// final failure, a redirect to another address, a certificate refused.
#include "activelist.h"
#include "downloadrow.h"
#include "downloadslot.h"
#include "tlstrust.h"
#include "transfer.h"
#include "urls.h"

void Transfer::fail(const QString &text)
{
    m_handled = true;
    // Final: no retry. The message comes last, as the person may act while it is open.
    closeWs();
    m_file.close();
    row().setRedoend(true);
    m_list.transferFailed(m_index);
    m_list.notifier().playSound(QStringLiteral("ding.wav"));
    m_list.notifier().message(text, QStringLiteral("error.gif"));
}

void Transfer::refuseCertificate()
{
    const QString text = QStringLiteral("El certificado de seguridad de ") + slot().Data +
                         QStringLiteral(" no es válido: ") +
                         certificateProblem(m_tls->sslHandshakeErrors()) + QLatin1Char('.');
    closeWs();
    m_file.close();
    row().setRedoend(true);
    m_list.showStatus(StatusPanel::Mensajes, text);
    m_list.transferFailed(m_index);
    m_list.notifier().reportFailure(text);
}

void Transfer::redirect(const QString &address)
{
    m_handled = true;
    DownloadSlot &s = slot();
    m_list.showStatus(StatusPanel::Mensajes, QStringLiteral("El archivo ") + s.Data +
                                                 QStringLiteral(" ha sido movido a ") + address +
                                                 QStringLiteral(".Se reconectará a esa dirección"));
    closeWs();
    m_file.close();
    row().setReconectando(true);
    s.Data = address;
    aimWs(address);
    connectHttp();
}

void Transfer::wsClosedByPeer()
{
    // The plain socket is unbuffered: it sees the close only once every byte before it was read
    // and written. A secure one may still hold decrypted bytes; they may end the download.
    if (const QPointer<QSslSocket> socket = m_tls) {
        while (m_tls->bytesAvailable() > 0 && readChunk() && socket == m_tls) {
        }
        if (socket != m_tls)
            return;
    }
    DownloadSlot &s = slot();
    s.velocidad = 0;
    // Up to three bytes short of the size still counts as finished; an unknown size always
    // does. A chunked reply ends with its last chunk, never with the close.
    if (m_chunked || s.total - 2 > s.bytes)
        lost();
    else
        finished();
}

void Transfer::lost()
{
    m_list.showStatus(StatusPanel::Mensajes, QStringLiteral("Se ha perdido la conexión con ") +
                                                 slot().Data +
                                                 QStringLiteral(" . Reconectando..."));
    row().setReconectando(true);
    closeWs();
    armRedo();
    m_file.close();
}

void Transfer::finished()
{
    m_file.close();
    closeWs();
    // An FTP control connection has nothing more to do either.
    closeFtp();
    m_list.transferFinished(m_index);
}

// An unbuffered socket learns of a close or a reset from the read itself, and then is left
// unconnected without a signal.
void Transfer::wsEnded()
{
    if (ws().error() == QAbstractSocket::RemoteHostClosedError)
        wsClosedByPeer();
    else
        wsError(ws().error());
}

void Transfer::wsError(QAbstractSocket::SocketError error)
{
    // A close by the server is reported as an error too; the close handler deals with it.
    if (error == QAbstractSocket::RemoteHostClosedError)
        return;
    // A certificate that fails the check fails the same way every time: final, like a 404.
    if (m_tls && !m_tls->sslHandshakeErrors().isEmpty())
        return refuseCertificate();
    m_list.showStatus(StatusPanel::Mensajes, ws().errorString());
    closeWs();
    m_file.close();
    armRedo();
}
