#include "transfer.h"

#include "failure.h"
#include "ftptransfer.h"
#include "httptransfer.h"
#include "notifier.h"
#include "settings.h"
#include "tlstrust.h"

#include <algorithm>

std::unique_ptr<Transfer> Transfer::make(DownloadSlot &slot, TransferEvents &events,
                                         const TransferContext &context, int retries)
{
    if (slot.Data.startsWith(QLatin1String("ftp://")))
        return std::make_unique<FtpTransfer>(slot, events, context, retries);
    return std::make_unique<HttpTransfer>(slot, events, context, retries);
}

Transfer::Transfer(DownloadSlot &slot, TransferEvents &events, const TransferContext &context,
                   int retries)
    : m_slot(slot), m_events(events), m_context(context), m_ws(*this, context.limit),
      m_redoTag(retries)
{
    connect(&m_redo, &QTimer::timeout, this, &Transfer::redoTick);
    m_silence.setInterval(1000);
    connect(&m_silence, &QTimer::timeout, this, &Transfer::silenceTick);
}

void Transfer::stop()
{
    m_stopped = true;
    m_redo.stop();
    m_silence.stop();
    closeConnections();
    m_file.close();
}

void Transfer::restart(int retries)
{
    m_redoTag = retries;
    stop();
    setStatus(DownloadStatus::Connecting);
    start();
}

void Transfer::closeWs()
{
    m_ws.close();
}

void Transfer::setStatus(DownloadStatus status)
{
    if (m_slot.status == status)
        return;
    m_slot.status = status;
    m_events.statusChanged();
}

// An attempt that has only just been asked for is never judged silent: the count starts again
// here, and once more when the connection opens.
void Transfer::attempt()
{
    m_stopped = false;
    m_sindatos = 0;
    m_silence.start();
}

void Transfer::armRedo(int seconds)
{
    m_redo.setInterval((seconds < 0 ? m_context.settings.segsv : seconds) * 1000);
    m_redo.start();
}

void Transfer::redoTick()
{
    m_redo.stop();
    --m_redoTag;
    if (m_redoTag >= 0) {
        closeConnections();
        m_file.close();
        setStatus(DownloadStatus::Connecting);
        start();
        return;
    }
    m_silence.stop();
    m_events.exhausted();
}

void Transfer::silenceTick()
{
    m_ws.gather(1);
    ++m_sindatos;
    // A retry already waiting is left to run: starting it again would restart its countdown.
    if (m_sindatos > m_context.settings.waitv && m_slot.status != DownloadStatus::Exhausted &&
        !m_redo.isActive())
        stalled();
}

void Transfer::stalled()
{
    closeWs();
    m_file.close();
    armRedo();
}

void Transfer::leave()
{
    closeWs();
    m_file.close();
    m_silence.stop();
}

bool Transfer::spendRetry()
{
    if (--m_redoTag >= 0)
        return true;
    closeConnections();
    m_file.close();
    m_silence.stop();
    m_events.exhausted();
    return false;
}

void Transfer::writePayload(QByteArrayView payload)
{
    m_file.write(payload);
    written(payload.size(), m_slot.total != 0 && m_file.position() - 1 >= m_slot.total);
}

void Transfer::written(qint64 wireBytes, bool complete)
{
    m_slot.bytes = m_file.position();
    m_events.progressed();
    if (complete) {
        finish();
        return;
    }
    heard(wireBytes, m_slot.total != 0 ? m_slot.total - (m_slot.bytes - 1) : -1);
}

void Transfer::heard(qint64 wireBytes, qint64 left)
{
    m_sindatos = 0;
    m_ws.streamed(wireBytes, left);
}

void Transfer::lost()
{
    m_events.message(QStringLiteral("Se ha perdido la conexión con ") + m_slot.Data +
                     QStringLiteral(" . Reconectando..."));
    setStatus(DownloadStatus::Connecting);
    closeWs();
    armRedo();
    m_file.close();
}

void Transfer::finish()
{
    m_file.close();
    m_silence.stop();
    closeConnections();
    m_slot.velocidad = 0;
    m_events.finished();
}

void Transfer::failFinally(const QString &text)
{
    closeConnections();
    m_file.close();
    m_silence.stop();
    setStatus(DownloadStatus::Exhausted);
    m_events.failed();
    m_context.notifier.playSound(QStringLiteral("ding.wav"));
    m_context.notifier.message(text, QStringLiteral("error.gif"));
}

bool Transfer::endedEarly() const
{
    // Up to three bytes short of the size still counts as finished; an unknown size always does.
    return m_slot.total - 2 > m_slot.bytes;
}

void Transfer::closedByPeer()
{
    m_slot.velocidad = 0;
    if (endedEarly())
        lost();
    else
        finish();
}

void Transfer::failed(QAbstractSocket::SocketError)
{
    // A certificate that fails the check fails the same way every time: final, like a 404.
    if (!m_ws.certificateErrors().isEmpty())
        return refuseCertificate();
    dropAndRetry(m_ws.errorString());
}

void Transfer::dropAndRetry(const QString &text)
{
    m_events.message(text);
    closeWs();
    m_file.close();
    armRedo();
}

void Transfer::refuseCertificate()
{
    const QString text = QStringLiteral("El certificado de seguridad de ") + m_slot.Data +
                         QStringLiteral(" no es válido: ") +
                         certificateProblem(m_ws.certificateErrors()) + QLatin1Char('.');
    closeWs();
    m_file.close();
    m_silence.stop();
    setStatus(DownloadStatus::Exhausted);
    m_events.message(text);
    m_events.failed();
    m_context.notifier.reportFailure(text);
}
