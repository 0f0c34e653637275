#pragma once

#include "downloadinfo.h"
#include "downloadlist.h"
#include "ftplogin.h"
#include "listrecord.h"
#include "notifier.h"
#include "speedlimit.h"
#include "statuspanel.h"
#include "transfer.h"

#include <QTimer>
#include <array>
#include <optional>

class Desktop;
class HistorySink;
class InactiveList;
struct Settings;

// The texts of the detail panel, for the selected download.
struct DownloadDetails
{
    QString inf; // the panel's title
    QString urlt;
    QString porcientot;
    QString bytest;
    QString velmedia;
    QString tiempou;
    QString tiemporest;
    bool allowredoc = false;
};

// Which toolbar commands act on the selected download; "delend" and "apagar" always do.
struct ActiveCommands
{
    bool detener = false;
    bool pausar = false;
    bool continuar = false;
    bool open = false;
    bool antivirus = false;
    bool propiedades = false;
};

// The running downloads: 41 slots (slot 0 is never used), each with its record and its transfer,
// the list file "activas.dwn", the limits, and the timers that count time, measure speed and
// switch the computer off.
class ActiveList final : public DownloadList
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ActiveList)

public:
    // A progress notice goes out at most this often.
    static constexpr int ProgressNoticeMs = 250;
    // A change the list keeps is saved at most this long after it happened.
    static constexpr int SaveSoonMs = 1000;

    ActiveList(const Settings &settings, Desktop &desktop, HistorySink &history,
               const ProgramFolder &folder, QObject *parent = nullptr);
    ~ActiveList() override;

    void setInactiveList(InactiveList *inactive) { m_inactive = inactive; }
    // Starts the once-a-second timers; tests call the ticks themselves.
    void startTimers();

    void load();
    // Adds a download and starts it; the new slot's index, or 0 when it could not be added.
    int addnew(const ListRecord &given, Loading loading = Loading::No);
    // A link dropped on a window: asks where to save it, then adds or queues it.
    void AgregarArrastrando(const QString &url);
    bool existe(int index) const override;
    void delfile(int index, bool borrar);
    void toinact(int index);
    void guardar_lista_activas();
    // Takes the finished downloads off the list; their files stay.
    void delend();
    // Closes every connection and file, leaving the downloads in the list to resume later.
    void stopAll();

    // Downloads in the list, plus one for the unused slot 0, as the limits count them.
    int rowCount() const;
    int highestIndex() const override;
    const DownloadSlot &slot(int index) const { return m_slots.at(index).record; }
    RowContent row(int index) const override;
    // The connections of a live download; null for a free slot.
    Transfer *transfer(int index) const { return m_slots.at(index).transfer; }

    int seleccionado() const override { return m_selected; }
    void setSeleccionado(int index) override;
    const DownloadDetails &details() const;
    ActiveCommands enabledCommands() const;
    // The detail window's texts for a live download.
    std::optional<DownloadInfo> detallado(int index) const;

    // The toolbar commands, on the selected download. Each does nothing while its button is
    // disabled; a question leaves them acting on what the slot holds once it is answered.
    void CallCancel();
    void CallPause();
    void CallContinue();
    void CallExe();
    void CallAntiv();
    void CallProp() override;
    // Every connection together reads at most this many Kb a second; 0 lifts the limit.
    void setSpeedLimit(int kbPerSecond) { m_limit.setRate(qint64(kbPerSecond) * 1024); }
    // How many connections a download may use when its server sends it in parts; downloads
    // running already keep theirs until they start again.
    void setConnections(int count) { m_connections = count; }
    void setApagar(bool on) { m_apagar = on; }
    bool apagar() const { return m_apagar; }

    void tiempotransTick();
    void updateTick();
    void shutdownTick();

    const Settings &settings() const { return m_settings; }
    Notifier &notifier() { return m_notifier; }

Q_SIGNALS:
    void statusText(StatusPanel panel, const QString &text);
    void downloadFinished(const QString &path);
    // Failed for good: a final server answer, or the retries ran out.
    void downloadFailed(const QString &url);
    void totalSpeed(int kbPerSecond);
    void shutdownRequested();

private:
    // One slot: its download, its transfer while it is live, and what the transfer tells.
    struct Slot final : TransferEvents
    {
        ActiveList *list = nullptr;
        int index = 0;
        DownloadSlot record;
        QString url;                // the address as added, which its row shows
        bool progressShown = false; // the row shows a size once bytes have arrived
        Transfer *transfer = nullptr;

        void progressed() override;
        void statusChanged() override { Q_EMIT list->changed(index); }
        void message(const QString &text) override
        {
            Q_EMIT list->statusText(StatusPanel::Mensajes, text);
        }
        void finished() override { list->transferFinished(index); }
        void failed() override { list->transferFailed(index); }
        void exhausted() override { list->retriesExhausted(index); }
        void kept() override { list->m_saveSoon.start(); }
        void keptNow() override { list->guardar_lista_activas(); }
    };

    int nextFreeIndex() const;
    void unload(int index);
    void noteProgress();
    void transferFinished(int index);
    void transferFailed(int index);
    void retriesExhausted(int index);
    void discardIfEmpty(int index);
    void pullFromQueue();
    void describeSelected();
    QString remainingTime(int index) const;
    static double progressPercent(const DownloadSlot &slot);
    // The slot still holds the download that was asked about.
    bool holds(int index, const QString &path) const;
    void logLine(const QString &text, quint32 colour);

    const Settings &m_settings;
    Desktop &m_desktop;
    HistorySink &m_history;
    ProgramFolder m_folder;
    Notifier m_notifier;
    FtpLoginPrompt m_login;
    SpeedLimit m_limit;
    int m_connections = 1;
    InactiveList *m_inactive = nullptr;

    std::array<Slot, SlotCount> m_slots;

    int m_selected = 0;
    // The selected download's progress texts are made when the details are read, not with
    // every chunk.
    mutable DownloadDetails m_details;
    mutable bool m_progressPending = false;
    bool m_apagar = false;
    QTimer m_progressNotice;
    // What transfers learn of their files is saved once for many of them: each save is made
    // durable on disk, which would cost a busy disk more than the download itself.
    QTimer m_saveSoon;
    // The extras last written beside the list; none before the first save.
    std::optional<ExtrasByPath> m_savedExtras;
    QTimer m_tiempotrans;
    QTimer m_update;
    QTimer m_shutdown;
};
