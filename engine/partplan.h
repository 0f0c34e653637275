#pragma once

#include <QList>
#include <QString>
#include <optional>
#include <utility>

// What is still to fetch of a file that several connections fetch at once: parts that never
// overlap, each the stretch [next, end) of byte offsets one connection still has to fetch.
// Every byte outside them is on disk.
class PartPlan
{
public:
    struct Part
    {
        qint64 next = 0;
        qint64 end = 0;
        bool busy = false; // a connection is fetching it

        qint64 left() const { return end - next; }
        bool operator==(const Part &) const = default;
    };

    // No part smaller than this is split off: asking for it would cost more than it gains.
    static constexpr qint64 MinPart = 4 * 1024 * 1024;

    PartPlan() = default;
    // A file of `total` bytes whose first `from` are on disk: one part, busy.
    PartPlan(qint64 from, qint64 total);

    bool isEmpty() const { return m_total <= 0; }
    qint64 total() const { return m_total; }
    qint64 fetched() const;
    bool complete() const { return fetched() == m_total; }
    const QList<Part> &parts() const { return m_parts; }
    // Where the first byte not on disk is.
    qint64 firstMissing() const;

    // Splits part `index` into as many as `count` busy parts of at least MinPart each; the
    // indices of the new parts.
    QList<int> split(int index, int count);
    // Work for a free connection: the largest part nobody fetches, else the second half of the
    // largest part being fetched when that half is at least MinPart. The part becomes busy.
    std::optional<int> take();
    void release(int index) { m_parts[index].busy = false; }
    // How many of `size` bytes arriving at `offset` belong to part `index`: none unless they
    // start at its next byte, and never past its end (which may have moved since they were
    // asked for).
    qint64 accept(int index, qint64 offset, qint64 size) const;
    void advance(int index, qint64 bytes) { m_parts[index].next += bytes; }
    int busyCount() const;

    // The stretches on disk as fractions of the file, in order.
    QList<std::pair<double, double>> fetchedFractions() const;

    // "total:next-end,next-end,..." of the parts still to fetch.
    QString toText() const;
    // An empty plan for a text that is no plan of a file of `total` bytes.
    static PartPlan fromText(const QString &text, qint64 total);

private:
    // The parts still to fetch, in order of their offsets.
    QList<Part> ordered() const;

    qint64 m_total = 0;
    QList<Part> m_parts; // a part keeps its index: connections know it by that
};
