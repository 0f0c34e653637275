#pragma once

#include "datasocket.h"
#include "downloadslot.h"
#include "slotfile.h"

#include <QObject>
#include <QTimer>
#include <memory>

class Desktop;
class FtpLoginPrompt;
class Notifier;
class SpeedLimit;
struct Settings;

// What a transfer tells the list that holds its download.
class TransferEvents
{
public:
    // Bytes were written: called for every chunk, so it must stay cheap.
    virtual void progressed() = 0;
    // The download's status changed.
    virtual void statusChanged() = 0;
    // A text for the person, in the main window's messages.
    virtual void message(const QString &text) = 0;
    // All of the file is there.
    virtual void finished() = 0;
    // Failed for good on a final answer; the person has been told why.
    virtual void failed() = 0;
    // The retries ran out.
    virtual void exhausted() = 0;
    // Something the lists keep changed (the file's name, the version of the file on the server).
    virtual void kept() = 0;
    // The same, saved before the transfer goes on: the bytes about to be written make sense
    // only with it.
    virtual void keptNow() = 0;

protected:
    ~TransferEvents() = default;
};

// What every transfer reads from the program around it.
struct TransferContext
{
    const Settings &settings;
    Desktop &desktop;
    Notifier &notifier;
    FtpLoginPrompt &login;
    SpeedLimit &limit;
    const int &connections; // for each download that the server lets run in parts
};

// The connections of one active download, given its record when it is made. It owns the data
// connection `ws` (HTTP, HTTPS, or the data of FTP) and what is written from it, the open file,
// the retry timer `redo` with its budget, and the count of seconds without data. Socket events
// drive everything.
class Transfer : public QObject, protected DataSocket::Receiver
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Transfer)

public:
    // The transfer the address asks for: http:// and https://, or ftp://. Throws Failure for an
    // address it cannot aim at (a port that is no number).
    static std::unique_ptr<Transfer> make(DownloadSlot &slot, TransferEvents &events,
                                          const TransferContext &context, int retries);

    // Opens the connection.
    virtual void start() = 0;
    // Closes every connection and the file without running any close handler.
    void stop();
    // Starts again at once with a fresh retry budget ("Reconectar").
    void restart(int retries);

    // The transfer was stopped; it runs nothing more until started again.
    bool stopped() const { return m_stopped; }
    bool redoActive() const { return m_redo.isActive(); }
    int redoBudget() const { return m_redoTag; }
    void redoTick();
    // One more second without data; a stall longer than the setting drops the connection.
    void silenceTick();

    // A download that runs on several connections: how many, and the stretches of its file
    // already fetched (fractions of its size). None and empty on one connection.
    virtual int connectionCount() const { return 0; }
    virtual QList<std::pair<double, double>> fetchedParts() const { return {}; }
    // The list files now hold what the transfer last asked them to keep.
    virtual void listSaved() {}

protected:
    Transfer(DownloadSlot &slot, TransferEvents &events, const TransferContext &context,
             int retries);

    // Every connection, for a stop or a retry; the data connection alone for a loss.
    virtual void closeConnections() { closeWs(); }
    virtual void closeWs();
    void setStatus(DownloadStatus status);
    // A connection is being opened: the silence count starts from now.
    void attempt();
    // The next try after `seconds`, or after the set pause when that is negative.
    void armRedo(int seconds = -1);
    // The file is written at its current position.
    void writePayload(QByteArrayView payload);
    // After a chunk is written: progress, and the end once all of it is there.
    void written(qint64 wireBytes, bool complete);
    // More bytes arrived on the data connection, and `left` are still expected (negative: not
    // known).
    void heard(qint64 wireBytes, qint64 left);
    // The data connection was silent too long.
    virtual void stalled();
    // The data connection is done with, and so are its file and its silence count.
    void leave();
    // One retry of the budget is spent; when none was left, the download gives up, and false.
    bool spendRetry();
    void lost();
    // This connection ends with `text` for the person; the next try comes after the set pause.
    void dropAndRetry(const QString &text);
    void finish();
    // A final failure: no retry. The message comes last, as the person may act while it is open.
    void failFinally(const QString &text);
    // The server has closed the data connection: finished, unless it ended early.
    virtual bool endedEarly() const;

    // The data connection.
    void closedByPeer() override;
    void failed(QAbstractSocket::SocketError error) override;

    DownloadSlot &m_slot;
    TransferEvents &m_events;
    const TransferContext m_context;
    SlotFile m_file;
    DataSocket m_ws;

private:
    void refuseCertificate();

    QTimer m_redo;
    int m_redoTag;
    QTimer m_silence;
    int m_sindatos = 0;
    bool m_stopped = false;
};
