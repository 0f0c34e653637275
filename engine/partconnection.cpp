#include "partconnection.h"

#include "failure.h"
#include "httpresponse.h"
#include "segments.h"
#include "settings.h"
#include "urls.h"

PartConnection::PartConnection(Segments &owner, SpeedLimit &limit, QObject *parent)
    : QObject(parent), m_owner(owner), m_ws(*this, limit)
{
    m_pause.setSingleShot(true);
    connect(&m_pause, &QTimer::timeout, this, &PartConnection::connectNow);
    m_silence.setInterval(1000);
    connect(&m_silence, &QTimer::timeout, this, &PartConnection::silenceTick);
}

PartConnection::~PartConnection()
{
    stop();
}

void PartConnection::fetch(int index, int delayMs)
{
    close();
    m_part = index;
    if (delayMs > 0)
        m_pause.start(delayMs);
    else
        connectNow();
}

void PartConnection::stop()
{
    m_pause.stop();
    close();
    m_part = -1;
}

void PartConnection::close()
{
    m_silence.stop();
    m_ws.close();
    m_file.close();
    m_head.reset();
    m_receiving = false;
}

void PartConnection::connectNow()
{
    const Segments::Target &target = m_owner.target();
    m_silent = 0;
    m_silence.start();
    m_ws.open(target.host, target.port, target.secure);
}

void PartConnection::silenceTick()
{
    m_ws.gather(1);
    if (++m_silent <= m_owner.context().settings.waitv)
        return;
    const QString why = QStringLiteral("Una conexión de ") + m_owner.slot().Data +
                        QStringLiteral(" lleva demasiado tiempo sin datos. Reconectando...");
    close();
    m_owner.partLost(*this, why);
}

void PartConnection::opened()
{
    m_silent = 0;
    const PartPlan::Part &part = m_owner.plan().parts()[m_part];
    const DownloadSlot &slot = m_owner.slot();
    try {
        m_file.open(slot.path);
        m_file.seek(part.next + 1);
    } catch (const Failure &failure) {
        close();
        return m_owner.partLost(*this, failure.description());
    }
    m_head = QByteArray();
    m_ws.write(Http::request({.path = m_owner.target().path,
                              .host = HostLineOf(slot.Data),
                              .rangeStart = part.next,
                              .rangeEnd = part.end - 1,
                              .extras = slot.extras,
                              .user = slot.usernm,
                              .password = slot.passw}));
}

void PartConnection::received(QByteArrayView chunk)
{
    m_silent = 0;
    QByteArray head;
    if (m_head) {
        m_head->append(chunk);
        const qsizetype bodyStart = Http::bodyStart(*m_head);
        if (bodyStart == 0 && m_head->size() <= MaxHead)
            return;
        head = *std::exchange(m_head, std::nullopt);
        if (bodyStart == 0 || !answersRequest(head)) {
            close();
            return m_owner.partRefused(*this);
        }
        chunk = QByteArrayView(head).sliced(bodyStart);
    }
    try {
        const bool done = m_owner.deliver(m_part, m_file, chunk);
        m_receiving = true;
        if (done) {
            close();
            return m_owner.partDone(*this);
        }
        m_ws.streamed(chunk.size(), m_owner.plan().parts()[m_part].left());
    } catch (const Failure &failure) {
        close();
        m_owner.partLost(*this, failure.description());
    }
}

// Anything but the asked bytes of the same file: a 200 with all of it, other bytes, a file that
// is no longer as long, or another version of it.
bool PartConnection::answersRequest(QByteArrayView head) const
{
    const Http::ContentRange range = Http::contentRange(head);
    const QString version = QString::fromLatin1(Http::validator(head));
    const QString &ours = m_owner.slot().extras.validator;
    return Http::statusCode(head) == 206 && !Http::isChunked(head) &&
           range.first == m_owner.plan().parts()[m_part].next &&
           range.length == m_owner.plan().total() &&
           (ours.isEmpty() || version.isEmpty() || version == ours);
}

void PartConnection::closedByPeer()
{
    close();
    m_owner.partLost(*this, m_owner.connectionLost());
}

void PartConnection::failed(QAbstractSocket::SocketError error)
{
    const QString why = m_ws.errorString();
    const bool refused = error == QAbstractSocket::ConnectionRefusedError && !m_receiving;
    close();
    if (refused)
        m_owner.partRefused(*this);
    else
        m_owner.partLost(*this, why);
}
