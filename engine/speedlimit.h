#pragma once

#include <QElapsedTimer>
#include <QtGlobal>

// The one speed limit every connection of every download shares: a bucket of bytes that fills
// at the set rate and holds at most a quarter of a second of them. A connection reads only what
// it is given, and while the bucket is empty it stops reading (the kernel holds the bytes and
// slows the server down) until the bucket has refilled.
class SpeedLimit
{
public:
    SpeedLimit();

    // Bytes per second; 0 lifts the limit.
    void setRate(qint64 bytesPerSecond);
    qint64 rate() const { return m_rate; }

    // Up to `wanted` bytes that may be read now; all of them without a limit.
    qint64 take(qint64 wanted);
    // What a read of up to `wanted` bytes waits to be given whole: `wanted`, or all the bucket
    // can hold when that is less. Many small reads would cost more than the bytes themselves.
    qint64 wholeRead(qint64 wanted) const;
    // Bytes taken and not read after all.
    void giveBack(qint64 bytes);
    // Milliseconds until the bucket holds `bytes` again (never more than it can hold), at least 1.
    int waitMs(qint64 bytes);

    // The same against a clock the caller runs, in milliseconds.
    void setRate(qint64 bytesPerSecond, qint64 nowMs);
    qint64 take(qint64 wanted, qint64 nowMs);
    int waitMs(qint64 bytes, qint64 nowMs);

private:
    void refill(qint64 nowMs);
    qint64 capacity() const;

    QElapsedTimer m_clock;
    qint64 m_rate = 0;
    qint64 m_milliBytes = 0;
    qint64 m_filledAtMs = 0;
};
