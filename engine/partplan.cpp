#include "partplan.h"

#include <QStringList>
#include <algorithm>

PartPlan::PartPlan(qint64 from, qint64 total)
    : m_total(total), m_parts{Part{.next = from, .end = total, .busy = true}}
{}

qint64 PartPlan::fetched() const
{
    qint64 missing = 0;
    for (const Part &part : m_parts)
        missing += part.left();
    return m_total - missing;
}

qint64 PartPlan::firstMissing() const
{
    const QList<Part> missing = ordered();
    return missing.isEmpty() ? m_total : missing.first().next;
}

QList<PartPlan::Part> PartPlan::ordered() const
{
    QList<Part> missing;
    std::copy_if(m_parts.begin(), m_parts.end(), std::back_inserter(missing),
                 [](const Part &part) { return part.left() > 0; });
    std::sort(missing.begin(), missing.end(),
              [](const Part &a, const Part &b) { return a.next < b.next; });
    return missing;
}

QList<int> PartPlan::split(int index, int count)
{
    const qint64 left = m_parts[index].left();
    const qint64 pieces = std::clamp<qint64>(left / MinPart, 1, count);
    const qint64 size = left / pieces;
    QList<int> added;
    const qint64 end = m_parts[index].end;
    m_parts[index].end = m_parts[index].next + size;
    for (qint64 i = 1; i < pieces; ++i) {
        const qint64 next = m_parts[index].next + i * size;
        m_parts.append(
            Part{.next = next, .end = i + 1 == pieces ? end : next + size, .busy = true});
        added.append(int(m_parts.size()) - 1);
    }
    return added;
}

std::optional<int> PartPlan::take()
{
    const auto largest = [this](bool busy) {
        int found = -1;
        for (int i = 0; i < m_parts.size(); ++i) {
            if (m_parts[i].busy == busy && m_parts[i].left() > 0 &&
                (found < 0 || m_parts[i].left() > m_parts[found].left()))
                found = i;
        }
        return found;
    };
    if (const int idle = largest(false); idle >= 0) {
        m_parts[idle].busy = true;
        return idle;
    }
    const int busy = largest(true);
    if (busy < 0 || m_parts[busy].left() / 2 < MinPart)
        return std::nullopt;
    Part &part = m_parts[busy];
    const qint64 middle = part.next + part.left() / 2;
    const Part second{.next = middle, .end = part.end, .busy = true};
    part.end = middle;
    m_parts.append(second);
    return int(m_parts.size()) - 1;
}

qint64 PartPlan::accept(int index, qint64 offset, qint64 size) const
{
    const Part &part = m_parts[index];
    if (offset != part.next)
        return 0;
    return std::clamp<qint64>(part.end - offset, 0, size);
}

int PartPlan::busyCount() const
{
    return int(std::count_if(m_parts.begin(), m_parts.end(),
                             [](const Part &part) { return part.busy && part.left() > 0; }));
}

QList<std::pair<double, double>> PartPlan::fetchedFractions() const
{
    QList<std::pair<double, double>> stretches;
    if (m_total <= 0)
        return stretches;
    const auto add = [&](qint64 from, qint64 to) {
        if (to > from)
            stretches.append({double(from) / double(m_total), double(to) / double(m_total)});
    };
    qint64 onDisk = 0; // where the stretch on disk since the last missing byte starts
    for (const Part &part : ordered()) {
        add(onDisk, part.next);
        onDisk = part.end;
    }
    add(onDisk, m_total);
    return stretches;
}

QString PartPlan::toText() const
{
    QStringList parts;
    for (const Part &part : ordered())
        parts.append(QString::number(part.next) + QLatin1Char('-') + QString::number(part.end));
    return QString::number(m_total) + QLatin1Char(':') + parts.join(QLatin1Char(','));
}

PartPlan PartPlan::fromText(const QString &text, qint64 total)
{
    const qsizetype colon = text.indexOf(QLatin1Char(':'));
    bool number = false;
    PartPlan plan;
    if (colon < 0 || text.left(colon).toLongLong(&number) != total || !number || total <= 0)
        return {};
    plan.m_total = total;
    qint64 last = 0;
    for (const QString &item : text.mid(colon + 1).split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        const QStringList ends = item.split(QLatin1Char('-'));
        bool first = false;
        bool second = false;
        const qint64 next = ends.value(0).toLongLong(&first);
        const qint64 end = ends.size() == 2 ? ends[1].toLongLong(&second) : -1;
        if (!first || !second || next < last || end <= next || end > total)
            return {};
        plan.m_parts.append(Part{.next = next, .end = end});
        last = end;
    }
    return plan;
}
