// The HTTP side of a transfer, plain or secure; `ws` also carries FTP data, which these handlers
// write.
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
        ws().write(Http::request(m_wsPath, HostOf(s.Data, m_list.desktop()), s.bytes - 1));
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
    if (!m_tls) {
        readChunk();
        return;
    }
    // A secure socket signals for every few kilobytes it decrypts, and not again for what it
    // keeps: its bytes are taken once it has decrypted all that arrived, in large chunks.
    if (!m_tlsReadQueued) {
        m_tlsReadQueued = true;
        QMetaObject::invokeMethod(this, &Transfer::readTls, Qt::QueuedConnection);
    }
}

void Transfer::readTls()
{
    m_tlsReadQueued = false;
    while (m_tls && m_tls->bytesAvailable() > 0 && readChunk()) {
    }
}

// Up to one chunk, read into the buffer all transfers share: a chunk is done with before the
// next read. False when nothing was read.
bool Transfer::readChunk()
{
    QByteArray &buffer = m_list.receiveBuffer();
    QTcpSocket &socket = ws();
    const qint64 received = socket.read(buffer.data(), buffer.size());
    if (received < 0 && socket.state() == QAbstractSocket::UnconnectedState) {
        wsEnded();
        return false;
    }
    if (received <= 0)
        return false;
    takeChunk(QByteArrayView(buffer.constData(), received));
    return true;
}

void Transfer::takeChunk(QByteArrayView chunk)
{
    m_handled = false;
    try {
        qsizetype payloadStart = 0;
        if (Http::isHead(chunk)) {
            handleHead(chunk, payloadStart);
            if (m_handled)
                return;
        }
        if (m_chunked)
            writeChunked(chunk.sliced(payloadStart));
        else
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
    m_chunked = Http::isChunked(chunk);
    if (m_chunked) {
        // The size is known only at the last chunk.
        m_decoder = ChunkedDecoder();
        s.total = 0;
    } else if (const qint64 length = Http::contentLength(chunk); length >= 0) {
        s.total = length + start - 1;
        m_file.reserve(s.total);
    }
    m_file.seek(start);
    s.bytesinicio = start;
    payloadStart = Http::bodyStart(chunk);
}

void Transfer::writePayload(QByteArrayView payload)
{
    m_file.write(payload);
    received(payload.size());
}

void Transfer::writeChunked(QByteArrayView framed)
{
    const qint64 wireBytes = framed.size();
    while (!framed.isEmpty())
        m_file.write(m_decoder.next(framed));
    DownloadSlot &s = slot();
    if (m_decoder.failed()) {
        s.bytes = m_file.position();
        return lost();
    }
    if (m_decoder.finished())
        s.total = m_file.position() - 1;
    received(wireBytes);
}

// After a chunk is written: progress, and the end of the download once all of it is there.
void Transfer::received(qint64 wireBytes)
{
    DownloadSlot &s = slot();
    s.bytes = m_file.position();
    m_sindatos = 0;
    m_list.showProgress(m_index);
    const bool complete = m_chunked ? m_decoder.finished() : s.total != 0 && s.bytes - 1 >= s.total;
    if (complete) {
        closeWs();
        finished();
        return;
    }
    gatherAfter(wireBytes);
}
