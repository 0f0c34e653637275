#pragma once

#include "datasocket.h"
#include "slotfile.h"

#include <QObject>
#include <QTimer>
#include <optional>

class Segments;

// One of the extra connections of a download that runs in parts: it asks for the bytes of its
// part, takes them only when the server answers with exactly those bytes of the same file, and
// writes them at their place in the file. It counts its own silence.
class PartConnection final : public QObject, DataSocket::Receiver
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PartConnection)

public:
    PartConnection(Segments &owner, SpeedLimit &limit, QObject *parent);
    ~PartConnection() override;

    // Asks for part `index`, after `delayMs`.
    void fetch(int index, int delayMs = 0);
    void stop();
    int part() const { return m_part; }
    // Connected or asking, not waiting to try again.
    bool active() const { return m_part >= 0 && !m_pause.isActive(); }
    // One more second without data: too many and the part is tried again.
    void silenceTick();

private:
    void connectNow();
    void opened() override;
    void received(QByteArrayView chunk) override;
    void closedByPeer() override;
    void failed(QAbstractSocket::SocketError error) override;
    bool answersRequest(QByteArrayView head) const;
    void close();

    Segments &m_owner;
    DataSocket m_ws;
    SlotFile m_file;
    QTimer m_pause;
    QTimer m_silence;
    int m_silent = 0;
    int m_part = -1;
    static constexpr qsizetype MaxHead = 64 * 1024;
    std::optional<QByteArray> m_head; // the head read so far, until its blank line
    bool m_receiving = false;         // bytes of the part arrived on this connection
};
