#include "segments.h"

#include "failure.h"
#include "partconnection.h"
#include "settings.h"

Segments::Segments(PartPlan plan, const Target &target, DownloadSlot &slot, TransferEvents &events,
                   const TransferContext &context, Owner &owner)
    : m_plan(std::move(plan)), m_target(target), m_slot(slot), m_events(events), m_context(context),
      m_owner(owner)
{
    m_keep.setInterval(KeepMs);
    connect(&m_keep, &QTimer::timeout, this, &Segments::keep);
}

// The connections go with their parent.
Segments::~Segments() = default;

void Segments::startBeside(int connections)
{
    m_mainPart = 0;
    m_splitInto = connections;
    keep();
    m_keep.start();
}

void Segments::listSaved()
{
    if (const int connections = std::exchange(m_splitInto, 0); connections > 1 && m_mainPart >= 0) {
        for (const int index : m_plan.split(m_mainPart, connections))
            open(index, 0);
    }
}

void Segments::resume(int connections)
{
    m_mainPart = -1;
    m_slot.bytes = m_slot.bytesinicio = m_plan.fetched() + 1;
    m_slot.tiempoinicio = m_slot.tiempo;
    for (int i = 0; i < connections; ++i) {
        const std::optional<int> index = m_plan.take();
        if (!index)
            break;
        open(*index, 0);
    }
    m_keep.start();
}

void Segments::stop()
{
    m_keep.stop();
    m_splitInto = 0;
    for (PartConnection *connection : std::as_const(m_connections)) {
        connection->stop();
        connection->deleteLater();
    }
    m_connections.clear();
    for (int i = 0; i < m_plan.parts().size(); ++i)
        m_plan.release(i);
    m_mainPart = -1;
    keep();
}

int Segments::connectionCount() const
{
    int count = m_mainPart >= 0 ? 1 : 0;
    for (const PartConnection *connection : m_connections)
        count += connection->active() ? 1 : 0;
    return count;
}

bool Segments::deliver(int index, SlotFile &file, QByteArrayView bytes)
{
    const qint64 taken = m_plan.accept(index, file.position() - 1, bytes.size());
    if (taken > 0) {
        file.write(bytes.first(taken));
        m_plan.advance(index, taken);
        m_slot.bytes = m_plan.fetched() + 1;
        m_progress = true;
        if (m_slot.status != DownloadStatus::Running) {
            m_slot.status = DownloadStatus::Running;
            m_events.statusChanged();
        }
        m_events.progressed();
    }
    return m_plan.parts()[index].left() == 0;
}

void Segments::mainDone()
{
    m_plan.release(m_mainPart);
    m_mainPart = -1;
    if (m_plan.complete())
        return m_owner.allFetched();
    if (const std::optional<int> index = m_plan.take())
        open(*index, 0);
}

void Segments::mainLost()
{
    m_plan.release(m_mainPart);
    m_mainPart = -1;
    if (!failureAllowed())
        return;
    if (const std::optional<int> index = m_plan.take())
        open(*index, m_context.settings.segsv * 1000);
}

QString Segments::connectionLost() const
{
    return QStringLiteral("Se ha perdido una conexión con ") + m_slot.Data +
           QStringLiteral(" . Reconectando...");
}

void Segments::partDone(PartConnection &connection)
{
    m_plan.release(connection.part());
    if (m_plan.complete())
        return m_owner.allFetched();
    giveWork(connection, 0);
}

void Segments::partLost(PartConnection &connection, const QString &why)
{
    m_events.message(why);
    m_plan.release(connection.part());
    if (!failureAllowed())
        return;
    giveWork(connection, m_context.settings.segsv * 1000);
}

void Segments::partRefused(PartConnection &connection)
{
    m_plan.release(connection.part());
    if (othersActive(&connection))
        return drop(connection);
    stop();
    m_owner.fallBack();
}

void Segments::open(int index, int delayMs)
{
    auto *connection = new PartConnection(*this, m_context.limit, this);
    m_connections.append(connection);
    connection->fetch(index, delayMs);
}

void Segments::giveWork(PartConnection &connection, int delayMs)
{
    if (const std::optional<int> index = m_plan.take())
        connection.fetch(*index, delayMs);
    else
        drop(connection);
}

void Segments::drop(PartConnection &connection)
{
    connection.stop();
    m_connections.removeOne(&connection);
    connection.deleteLater();
}

bool Segments::failureAllowed()
{
    if (std::exchange(m_progress, false))
        return true;
    return m_owner.spendRetry();
}

bool Segments::othersActive(const PartConnection *besides) const
{
    if (m_mainPart >= 0)
        return true;
    return std::any_of(m_connections.begin(), m_connections.end(),
                       [besides](const PartConnection *connection) {
                           return connection != besides && connection->part() >= 0;
                       });
}

void Segments::keep()
{
    const QString text = m_plan.complete() ? QString() : m_plan.toText();
    if (text == m_slot.extras.parts)
        return;
    m_slot.extras.parts = text;
    m_events.kept();
}
