#include "httptransfer.h"

#include "failure.h"
#include "httpresponse.h"
#include "notifier.h"
#include "urls.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

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

HttpTransfer::~HttpTransfer() = default;

void HttpTransfer::start()
{
    if (resumeParts())
        return;
    attempt();
    m_ws.open(m_host, m_port, m_secure);
}

void HttpTransfer::closeConnections()
{
    closeWs();
    if (m_segments)
        m_segments->stop();
}

void HttpTransfer::closeWs()
{
    Transfer::closeWs();
    m_chunked = false;
    m_head.reset();
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
        m_head = QByteArray();
        m_ws.write(Http::request({.path = m_path,
                                  .host = HostLineOf(m_slot.Data),
                                  .rangeStart = m_slot.bytes - 1,
                                  .extras = m_slot.extras,
                                  .user = m_slot.usernm,
                                  .password = m_slot.passw}));
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
        if (m_head) {
            m_head->append(chunk);
            return readHead();
        }
        writeBody(chunk);
    } catch (const Failure &failure) {
        // A reply that cannot be taken apart, or a write that failed (a full disk, a file
        // taken away), ends this connection; it is tried again.
        dropAndRetry(failure.description());
    }
}

// The head is gathered over as many reads as it takes and never reaches the file; a reply that
// does not begin as a head has none, and all of it is the file.
void HttpTransfer::readHead()
{
    static const QByteArray Start("HTTP/1.");
    const QByteArray head = *m_head;
    if (head.size() < Start.size() && Start.startsWith(head))
        return;
    if (!Http::isHead(head)) {
        m_head.reset();
        return writeBody(head);
    }
    const qsizetype payloadStart = Http::bodyStart(head);
    if (payloadStart == 0) {
        if (head.size() > MaxHead)
            lost();
        return;
    }
    m_head.reset();
    handleHead(head);
    if (!m_handled)
        writeBody(QByteArrayView(head).sliced(payloadStart));
}

void HttpTransfer::writeBody(QByteArrayView bytes)
{
    if (m_segments && m_segments->mainPart() >= 0)
        writeMainPart(bytes);
    else if (m_chunked)
        writeChunked(bytes);
    else
        writePayload(bytes);
}

void HttpTransfer::handleHead(QByteArrayView chunk)
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
    case 301:
    case 302:
    case 303:
    case 307:
    case 308:
        return redirect(Http::location(chunk));
    case 416:
        // Asked for the bytes after the end: the file is complete when it is that long.
        if (const qint64 length = Http::completeLength(chunk);
            length > 0 && length == m_requestStart - 1)
            return alreadyComplete(length);
        break;
    case 408:
    case 429:
    case 502:
    case 503:
    case 504:
        return tryLater(chunk, Http::retryAfter(chunk));
    default:
        break;
    }
    m_redirects = 0;
    // Anything else that is no success is never written into the file: a server error may pass,
    // the rest is the server's final word.
    if (code >= 300)
        return code >= 500 ? tryLater(chunk, -1) : refuse(rejection(chunk));
    takeReply(chunk, code == 206);
}

void HttpTransfer::takeReply(QByteArrayView chunk, bool partial)
{
    // The reply decides where its bytes go: a 206 continues where the Range line asked, any
    // other reply carries the whole file from its first byte, a new version of it when the
    // bytes on disk belonged to another: those go.
    m_slot.allowredo = partial;
    const qint64 start = partial ? m_requestStart : 1;
    if (!partial && m_requestStart > 1)
        m_file.truncate();
    if (const QString version = QString::fromLatin1(Http::validator(chunk));
        !partial || m_slot.extras.validator.isEmpty()) {
        if (version != m_slot.extras.validator) {
            m_slot.extras.validator = version;
            m_events.kept();
        }
    }
    if (m_requestStart == 1)
        nameFrom(Http::dispositionName(chunk));
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
    if (partial && !m_chunked && m_slot.total - (start - 1) >= 2 * PartPlan::MinPart &&
        m_context.connections > 1)
        beginParts(start - 1);
}

QString HttpTransfer::rejection(QByteArrayView chunk) const
{
    return QStringLiteral("El servidor ha rechazado la descarga de ") + m_slot.Data +
           QStringLiteral(" (") + QString::number(Http::statusCode(chunk)) + QLatin1Char(' ') +
           Http::reason(chunk) + QStringLiteral(").");
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
    return m_chunked || (m_head && !m_head->isEmpty()) || Transfer::endedEarly();
}

void HttpTransfer::refuse(const QString &text)
{
    m_handled = true;
    failFinally(text);
}

void HttpTransfer::redirect(const QString &location)
{
    m_handled = true;
    const QString address = Resolved(m_slot.Data, location);
    if (address.isEmpty())
        return failFinally(QStringLiteral("El servidor ha movido ") + m_slot.Data +
                           QStringLiteral(" a una dirección no válida."));
    if (++m_redirects > MaxRedirects)
        return failFinally(QStringLiteral("Demasiadas redirecciones al descargar ") + m_slot.Data +
                           QLatin1Char('.'));
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

void HttpTransfer::tryLater(QByteArrayView chunk, int seconds)
{
    m_handled = true;
    m_redirects = 0;
    m_events.message(QStringLiteral("El servidor no puede atender ahora la descarga de ") +
                     m_slot.Data + QStringLiteral(" (") + QString::number(Http::statusCode(chunk)) +
                     QLatin1Char(' ') + Http::reason(chunk) +
                     QStringLiteral("). Se volverá a intentar."));
    setStatus(DownloadStatus::Connecting);
    closeWs();
    m_file.close();
    armRedo(seconds);
}

void HttpTransfer::alreadyComplete(qint64 length)
{
    m_handled = true;
    m_slot.total = length;
    m_slot.bytes = length + 1;
    finish();
}

void HttpTransfer::nameFrom(const QString &offered)
{
    // Only the last part of what the server offers: a name never leaves the download folder.
    const QString name =
        SafeFileName(offered.section(QRegularExpression(QStringLiteral("[/\\\\]")), -1), QString());
    if (name.isEmpty())
        return;
    const QFileInfo current(m_slot.path);
    if (name == current.fileName())
        return;
    const QString path = unusedPath(current.dir().filePath(name));
    m_file.close();
    QFile::remove(m_slot.path);
    m_slot.path = path;
    m_file.open(path);
    m_events.kept();
    m_events.statusChanged();
}

int HttpTransfer::connectionCount() const
{
    return m_segments ? m_segments->connectionCount() : 0;
}

QList<std::pair<double, double>> HttpTransfer::fetchedParts() const
{
    return m_segments ? m_segments->plan().fetchedFractions() : QList<std::pair<double, double>>();
}

void HttpTransfer::listSaved()
{
    if (m_segments)
        m_segments->listSaved();
}

bool HttpTransfer::resumeParts()
{
    if (!m_segments && !m_slot.extras.parts.isEmpty()) {
        PartPlan plan = PartPlan::fromText(m_slot.extras.parts, m_slot.total);
        if (plan.isEmpty()) {
            // Without its plan nobody knows where the holes of the file are: it starts again.
            m_slot.extras.parts.clear();
            QFile::resize(m_slot.path, 0);
            m_slot.bytes = 1;
            return false;
        }
        makeSegments(std::move(plan));
    }
    if (!m_segments)
        return false;
    m_segments->resume(std::max(1, m_context.connections));
    return true;
}

void HttpTransfer::beginParts(qint64 from)
{
    makeSegments(PartPlan(from, m_slot.total));
    m_segments->startBeside(m_context.connections);
}

void HttpTransfer::makeSegments(PartPlan plan)
{
    Segments::Owner &owner = *this;
    m_segments = std::make_unique<Segments>(std::move(plan),
                                            Segments::Target{m_host, m_port, m_secure, m_path},
                                            m_slot, m_events, m_context, owner);
}

void HttpTransfer::writeMainPart(QByteArrayView bytes)
{
    const int part = m_segments->mainPart();
    if (!m_segments->deliver(part, m_file, bytes)) {
        heard(bytes.size(), m_segments->plan().parts()[part].left());
        return;
    }
    leave();
    m_segments->mainDone();
}

void HttpTransfer::mainPartLost()
{
    m_events.message(m_segments->connectionLost());
    leave();
    m_segments->mainLost();
}

void HttpTransfer::closedByPeer()
{
    if (m_segments && m_segments->mainPart() >= 0)
        return mainPartLost();
    Transfer::closedByPeer();
}

void HttpTransfer::failed(QAbstractSocket::SocketError error)
{
    if (m_segments && m_segments->mainPart() >= 0 && m_ws.certificateErrors().isEmpty())
        return mainPartLost();
    Transfer::failed(error);
}

void HttpTransfer::stalled()
{
    if (m_segments && m_segments->mainPart() >= 0)
        return mainPartLost();
    Transfer::stalled();
}

void HttpTransfer::allFetched()
{
    m_slot.extras.parts.clear();
    m_slot.bytes = m_slot.total + 1;
    finish();
}

// Runs once the connection that was refused has returned: the segments go.
void HttpTransfer::fallBack()
{
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (!m_segments)
                return;
            // Until the file ends at the first byte missing, the lists keep everything after
            // it as missing, so that a crash in between leaves no hole taken for bytes.
            const qint64 missing = m_segments->plan().firstMissing();
            m_segments.reset();
            m_slot.extras.parts = PartPlan(missing, m_slot.total).toText();
            m_events.keptNow();
            QFile::resize(m_slot.path, missing);
            m_slot.extras.parts.clear();
            m_slot.bytes = missing + 1;
            m_events.keptNow();
            setStatus(DownloadStatus::Connecting);
            start();
        },
        Qt::QueuedConnection);
}
