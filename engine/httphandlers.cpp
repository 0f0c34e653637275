// The HTTP side of a transfer; `ws` also carries FTP data, which these handlers write.
#include "activelist.h"
#include "downloadrow.h"
#include "downloadslot.h"
#include "failure.h"
#include "httpresponse.h"
#include "settings.h"
#include "texts.h"
#include "transfer.h"
#include "urls.h"

#include <QFileInfo>

void Transfer::wsConnected()
{
    DownloadSlot &s = slot();
    if (!s.ftpestado.isEmpty())
        return;
    m_sindatos = 0;
    try {
        if (s.bytes == 0)
            s.bytes = 1;
        m_file.open(s.path);
        // Compared with `bytes` itself, not `bytes` - 1: a file whose length equals `bytes`
        // keeps the old value.
        if (m_file.length() != s.bytes)
            s.bytes = m_file.length() + 1;
        m_requestStart = s.bytes;
        m_ws.write(Http::request(m_wsPath, HostOf(s.Data, m_list.desktop()), s.bytes - 1));
        m_file.seek(s.allowredo ? s.bytes : 1);
        s.bytesinicio = m_file.position();
        row().setReconectando(false);
        s.tiempoinicio = s.tiempo;
    } catch (const Failure &failure) {
        m_list.notifier().playSound(QStringLiteral("ding.wav"));
        m_list.notifier().message(QStringLiteral("Error al intentar descargar ") + row().archivo() +
                                      QStringLiteral(" (") + failure.description() +
                                      QStringLiteral(")"),
                                  QStringLiteral("error.gif"));
    }
}

void Transfer::wsReadyRead()
{
    // Up to one chunk, read into the buffer all transfers share: a chunk is done with before
    // the next event.
    QByteArray &buffer = m_list.receiveBuffer();
    const qint64 received = m_ws.read(buffer.data(), buffer.size());
    if (received < 0 && m_ws.state() == QAbstractSocket::UnconnectedState) {
        wsEnded();
        return;
    }
    if (received <= 0)
        return;
    const QByteArrayView chunk(buffer.constData(), received);
    m_handled = false;
    try {
        qsizetype payloadStart = 0;
        if (Http::isHead(chunk)) {
            handleHead(chunk, payloadStart);
            if (m_handled)
                return;
        }
        writePayload(chunk.sliced(payloadStart));
    } catch (const Failure &) {
        // A reply that cannot be taken apart, or a failed write, ends this chunk quietly.
    }
}

void Transfer::handleHead(QByteArrayView chunk, qsizetype &payloadStart)
{
    DownloadSlot &s = slot();
    const int code = Http::statusCode(chunk);
    switch (code) {
    case 401:
        return fail(QStringLiteral("Acceso denegado al archivo"));
    case 404:
        return fail(QStringLiteral("El archivo ") + s.Data + QStringLiteral(" no existe."));
    case 500:
        return fail(QStringLiteral("Error interno del servidor ") + s.Data + QStringLiteral("."));
    case 400:
        return fail(QStringLiteral("Error de sintaxis en la petición"));
    case 302:
        return redirect(Http::location(chunk));
    default:
        break;
    }
    // The reply decides where its bytes go: a 206 continues where the Range line asked, any
    // other reply carries the whole file from its first byte.
    const bool partial = code == 206;
    s.allowredo = partial;
    const qint64 start = partial ? m_requestStart : 1;
    const qint64 length = Http::contentLength(chunk);
    if (length >= 0) {
        s.total = length + start - 1;
        m_file.reserve(s.total);
    }
    m_file.seek(start);
    s.bytesinicio = start;
    payloadStart = Http::bodyStart(chunk);
}

void Transfer::writePayload(QByteArrayView payload)
{
    DownloadSlot &s = slot();
    m_file.write(payload);
    s.bytes = m_file.position();
    m_sindatos = 0;
    m_list.showProgress(m_index);
    if (s.total != 0 && s.bytes - 1 >= s.total) {
        closeWs();
        finished();
        return;
    }
    gatherAfter(payload.size());
}

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

void Transfer::redirect(const QString &address)
{
    m_handled = true;
    DownloadSlot &s = slot();
    m_list.showStatus(1, QStringLiteral("El archivo ") + s.Data +
                             QStringLiteral(" ha sido movido a ") + address +
                             QStringLiteral(".Se reconectará a esa dirección"));
    closeWs();
    m_file.close();
    row().setReconectando(true);
    s.Data = address;
    m_wsHost = HostOf(address, m_list.desktop());
    m_wsPort = PortOf(address);
    m_wsPath = PathOf(address);
    openWs(m_wsHost, m_wsPort);
}

void Transfer::wsClosedByPeer()
{
    // The socket is unbuffered: the close is seen only once every byte before it was read and
    // written.
    DownloadSlot &s = slot();
    s.velocidad = 0;
    // Up to three bytes short of the size still counts as finished; an unknown size always does.
    if (s.total - 2 > s.bytes)
        lost();
    else
        finished();
}

void Transfer::lost()
{
    m_list.showStatus(1, QStringLiteral("Se ha perdido la conexión con ") + slot().Data +
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
    if (m_ws.error() == QAbstractSocket::RemoteHostClosedError)
        wsClosedByPeer();
    else
        wsError(m_ws.error());
}

void Transfer::wsError(QAbstractSocket::SocketError error)
{
    // A close by the server is reported as an error too; the close handler deals with it.
    if (error == QAbstractSocket::RemoteHostClosedError)
        return;
    m_list.showStatus(1, m_ws.errorString());
    closeWs();
    m_file.close();
    armRedo();
}
