#include "httptransfer.h"

#include "failure.h"
#include "httpresponse.h"
#include "notifier.h"
#include "urls.h"

HttpTransfer::HttpTransfer(DownloadSlot &slot, TransferEvents &events,
                           const TransferContext &context, int retries)
    : Transfer(slot, events, context, retries)
{
    aim(slot.Data);
}

void HttpTransfer::aim(const QString &address)
{
    m_port = PortOf(address);
    m_host = HostOf(address, m_context.desktop);
    m_path = PathOf(address);
    m_secure = address.startsWith(QLatin1String("https://"));
}

void HttpTransfer::start()
{
    attempt();
    m_ws.open(m_host, m_port, m_secure);
}

void HttpTransfer::closeWs()
{
    Transfer::closeWs();
    m_chunked = false;
}

void HttpTransfer::opened()
{
    attempt();
    try {
        if (m_slot.bytes == 0)
            m_slot.bytes = 1;
        m_file.open(m_slot.path);
        // Compared with `bytes` itself, not `bytes` - 1: a file whose length equals `bytes`
        // keeps the old value.
        if (m_file.length() != m_slot.bytes)
            m_slot.bytes = m_file.length() + 1;
        m_requestStart = m_slot.bytes;
        m_ws.write(Http::request({.path = m_path,
                                  .host = HostLineOf(m_slot.Data),
                                  .rangeStart = m_slot.bytes - 1,
                                  .extras = m_slot.extras}));
        m_file.seek(m_slot.allowredo ? m_slot.bytes : 1);
        m_slot.bytesinicio = m_file.position();
        setStatus(DownloadStatus::Running);
        m_slot.tiempoinicio = m_slot.tiempo;
    } catch (const Failure &failure) {
        m_context.notifier.playSound(QStringLiteral("ding.wav"));
        m_context.notifier.message(QStringLiteral("Error al intentar descargar ") + m_slot.path +
                                       QStringLiteral(" (") + failure.description() +
                                       QStringLiteral(")"),
                                   QStringLiteral("error.gif"));
    }
}

void HttpTransfer::received(QByteArrayView chunk)
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
    } catch (const Failure &failure) {
        // A reply that cannot be taken apart, or a write that failed (a full disk, a file
        // taken away), ends this connection; it is tried again.
        m_events.message(failure.description());
        closeWs();
        m_file.close();
        armRedo();
    }
}

void HttpTransfer::handleHead(QByteArrayView chunk, qsizetype &payloadStart)
{
    const int code = Http::statusCode(chunk);
    switch (code) {
    case 401:
        return refuse(QStringLiteral("Acceso denegado al archivo"));
    case 404:
        return refuse(QStringLiteral("El archivo ") + m_slot.Data + QStringLiteral(" no existe."));
    case 500:
        return refuse(QStringLiteral("Error interno del servidor ") + m_slot.Data +
                      QStringLiteral("."));
    case 400:
        return refuse(QStringLiteral("Error de sintaxis en la petición"));
    case 302:
        return redirect(Http::location(chunk));
    default:
        break;
    }
    // The reply decides where its bytes go: a 206 continues where the Range line asked, any
    // other reply carries the whole file from its first byte.
    const bool partial = code == 206;
    m_slot.allowredo = partial;
    const qint64 start = partial ? m_requestStart : 1;
    m_chunked = Http::isChunked(chunk);
    if (m_chunked) {
        // The size is known only at the last chunk.
        m_decoder = ChunkedDecoder();
        m_slot.total = 0;
    } else if (const qint64 length = Http::contentLength(chunk); length >= 0) {
        m_slot.total = length + start - 1;
        m_file.reserve(m_slot.total);
    }
    m_file.seek(start);
    m_slot.bytesinicio = start;
    payloadStart = Http::bodyStart(chunk);
}

void HttpTransfer::writeChunked(QByteArrayView framed)
{
    const qint64 wireBytes = framed.size();
    while (!framed.isEmpty())
        m_file.write(m_decoder.next(framed));
    if (m_decoder.failed()) {
        m_slot.bytes = m_file.position();
        return lost();
    }
    if (m_decoder.finished())
        m_slot.total = m_file.position() - 1;
    written(wireBytes, m_decoder.finished());
}

// A chunked reply ends with its last chunk, never with the close.
bool HttpTransfer::endedEarly() const
{
    return m_chunked || Transfer::endedEarly();
}

void HttpTransfer::refuse(const QString &text)
{
    m_handled = true;
    failFinally(text);
}

void HttpTransfer::redirect(const QString &address)
{
    m_handled = true;
    m_events.message(QStringLiteral("El archivo ") + m_slot.Data +
                     QStringLiteral(" ha sido movido a ") + address +
                     QStringLiteral(".Se reconectará a esa dirección"));
    closeWs();
    m_file.close();
    setStatus(DownloadStatus::Connecting);
    m_slot.Data = address;
    aim(address);
    start();
}
