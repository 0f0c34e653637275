#include "speedlimit.h"

#include <algorithm>

SpeedLimit::SpeedLimit()
{
    m_clock.start();
}

void SpeedLimit::setRate(qint64 bytesPerSecond)
{
    setRate(bytesPerSecond, m_clock.elapsed());
}

void SpeedLimit::setRate(qint64 bytesPerSecond, qint64 nowMs)
{
    bytesPerSecond = std::max<qint64>(bytesPerSecond, 0);
    if (bytesPerSecond == m_rate)
        return;
    m_rate = bytesPerSecond;
    // A new limit starts from an empty bucket, so a lowered one holds from the first read.
    m_milliBytes = 0;
    m_filledAtMs = nowMs;
}

qint64 SpeedLimit::capacity() const
{
    // A quarter of a second, and never less than one read of a few kilobytes.
    return std::max<qint64>(m_rate / 4, 4096);
}

void SpeedLimit::refill(qint64 nowMs)
{
    // Kept in thousandths of a byte, so that no part of a byte is lost between two reads.
    const qint64 elapsed = std::max<qint64>(nowMs - m_filledAtMs, 0);
    m_filledAtMs = nowMs;
    m_milliBytes = std::min(m_milliBytes + elapsed * m_rate, capacity() * 1000);
}

qint64 SpeedLimit::take(qint64 wanted)
{
    return take(wanted, m_clock.elapsed());
}

qint64 SpeedLimit::take(qint64 wanted, qint64 nowMs)
{
    if (m_rate == 0)
        return wanted;
    refill(nowMs);
    const qint64 given = std::clamp<qint64>(wanted, 0, m_milliBytes / 1000);
    m_milliBytes -= given * 1000;
    return given;
}

qint64 SpeedLimit::wholeRead(qint64 wanted) const
{
    return m_rate == 0 ? wanted : std::min(wanted, capacity());
}

void SpeedLimit::giveBack(qint64 bytes)
{
    if (m_rate > 0)
        m_milliBytes =
            std::min(m_milliBytes + std::max<qint64>(bytes, 0) * 1000, capacity() * 1000);
}

int SpeedLimit::waitMs(qint64 bytes)
{
    return waitMs(bytes, m_clock.elapsed());
}

int SpeedLimit::waitMs(qint64 bytes, qint64 nowMs)
{
    if (m_rate == 0)
        return 1;
    refill(nowMs);
    const qint64 missing = std::min(bytes, capacity()) * 1000 - m_milliBytes;
    return int(std::clamp<qint64>((missing + m_rate - 1) / m_rate, 1, 1000));
}
