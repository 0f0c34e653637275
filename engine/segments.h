#pragma once

#include "partplan.h"
#include "transfer.h"

#include <QObject>
#include <QTimer>

class PartConnection;

// The connections of a download that the server lets run in parts, beside the transfer's own
// (the "main" connection, which may still be fetching the first part). Each connection fetches
// one part; one that is done takes over half of the largest part left, so that they all finish
// close together. A connection that fails fetches its part again after the set pause; the
// download's retries are spent only while none of its connections makes progress. A server
// that refuses a connection leaves the download on the ones it has.
class Segments final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Segments)

public:
    // What the transfer that made the segments is asked to do.
    class Owner
    {
    public:
        virtual void allFetched() = 0;
        // A connection failed while none made progress: one retry is spent. False when none
        // was left; the download has then given up.
        virtual bool spendRetry() = 0;
        // The server refused the last connection: the download goes on over one connection,
        // from the first byte missing.
        virtual void fallBack() = 0;

    protected:
        ~Owner() = default;
    };

    // Where every connection asks.
    struct Target
    {
        QString host;
        quint16 port = 0;
        bool secure = false;
        QString path;
    };

    // The plan is saved beside the lists this often while the download runs.
    static constexpr int KeepMs = 3000;

    Segments(PartPlan plan, const Target &target, DownloadSlot &slot, TransferEvents &events,
             const TransferContext &context, Owner &owner);
    ~Segments() override;

    // The main connection fetches part 0: it is split with `connections` - 1 new connections
    // once the lists hold the plan.
    void startBeside(int connections);
    // Further connections write past the bytes on disk, so they start only once the lists hold
    // the plan: after a crash, the holes between them are never taken for bytes.
    void listSaved();
    // Opens as many as `connections` connections for what is left.
    void resume(int connections);
    // Closes every connection; the plan is kept in the download's record.
    void stop();

    int connectionCount() const;
    const PartPlan &plan() const { return m_plan; }
    const Target &target() const { return m_target; }
    const DownloadSlot &slot() const { return m_slot; }
    const TransferContext &context() const { return m_context; }

    // The part the main connection fetches; -1 when it fetches none.
    int mainPart() const { return m_mainPart; }
    // Writes what belongs to part `index` of `bytes` arriving at `file`'s position; true once
    // the part is all there.
    bool deliver(int index, SlotFile &file, QByteArrayView bytes);
    void mainDone();
    // The main connection failed: its part is fetched again by a connection of the segments.
    void mainLost();

    // The message for a connection that ended before its part did.
    QString connectionLost() const;

    // What a connection tells.
    void partDone(PartConnection &connection);
    void partLost(PartConnection &connection, const QString &why);
    void partRefused(PartConnection &connection);

private:
    void open(int index, int delayMs);
    // Another part for a free connection; without one, the connection goes.
    void giveWork(PartConnection &connection, int delayMs);
    void drop(PartConnection &connection);
    // A failure: false when it cost the last retry.
    bool failureAllowed();
    bool othersActive(const PartConnection *besides) const;
    void keep();

    PartPlan m_plan;
    Target m_target;
    DownloadSlot &m_slot;
    TransferEvents &m_events;
    const TransferContext m_context;
    Owner &m_owner;
    QList<PartConnection *> m_connections;
    int m_mainPart = -1;
    int m_splitInto = 0;     // the connections the main part is split between once saved
    bool m_progress = false; // bytes arrived since the last failure
    QTimer m_keep;
};
