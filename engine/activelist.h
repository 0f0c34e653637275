#pragma once

#include "downloadinfo.h"
#include "downloadrow.h"
#include "downloadslot.h"
#include "ftplogin.h"
#include "notifier.h"
#include "rowtable.h"
#include "statuspanel.h"

#include <QObject>
#include <QTimer>
#include <array>
#include <memory>
#include <optional>

class Desktop;
class HistorySink;
class InactiveList;
class Transfer;
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

// The running downloads: 41 slots (slot 0 is never used), each with its row and its
// connections, the list file "activas.dwn", the limits, and the timers that measure speed,
// count silence and switch the computer off.
class ActiveList final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ActiveList)

public:
    ActiveList(const Settings &settings, Desktop &desktop, HistorySink &history,
               const ProgramFolder &folder, RowFactory rows, QObject *parent = nullptr);
    ~ActiveList() override;

    void setInactiveList(InactiveList *inactive) { m_inactive = inactive; }
    // The rows of downloads added from now on; set it before load().
    void setRowFactory(RowFactory rows) { m_makeRow = std::move(rows); }
    // Starts the once-a-second timers; tests call the ticks themselves.
    void startTimers();

    void load();
    // Adds a download and starts it; the new slot's index, or 0 when it could not be added.
    int addnew(const QString &Data, const QString &path, qint64 total, qint64 bytes, bool allowredo,
               qint64 tiempo, bool loading, const QString &usernm, const QString &passw,
               bool rememb);
    // A link dropped on a window: asks where to save it, then adds or queues it.
    void AgregarArrastrando(const QString &url);
    bool existe(int index) const;
    void delfile(int index, bool borrar);
    void toinact(int index);
    void guardar_lista_activas();
    // Takes the finished downloads off the list; their files stay.
    void delend();
    // Closes every connection and file, leaving the downloads in the list to resume later.
    void stopAll();

    // Rows loaded, the template row included, as the limits count them.
    int rowCount() const { return rowCountOf(m_rows); }
    int highestIndex() const { return highestIndexOf(m_rows); }
    bool hasRow(int index) const;
    DownloadSlot &slotAt(int index) { return m_slots.at(index); }
    DownloadRow *rowAt(int index) { return m_rows.at(index).get(); }
    Transfer *transferAt(int index) { return m_transfers.at(index).get(); }

    int seleccionado() const { return m_selected; }
    void setSeleccionado(int index);
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
    void CallProp();
    void setApagar(bool on) { m_apagar = on; }
    bool apagar() const { return m_apagar; }

    void tiempotransTick();
    void updateTick();
    void shutdownTick();

    // Called by the transfers.
    // The most one read takes from a socket; larger blocks were measured slower.
    static constexpr qint64 ReceiveChunk = 256 * 1024;
    QByteArray &receiveBuffer() { return m_receiveBuffer; }
    const Settings &settings() const { return m_settings; }
    Desktop &desktop() { return m_desktop; }
    Notifier &notifier() { return m_notifier; }
    void showStatus(StatusPanel panel, const QString &text);
    void showProgress(int index);
    static double progressPercent(const DownloadSlot &slot);
    void transferFinished(int index);
    void retriesExhausted(int index);
    void transferFailed(int index);
    // The caption of the one FTP login dialog; it reads WrongUserCaption while a refused login
    // is being asked again.
    QString loginCaption() const { return m_loginCaption; }
    void setLoginCaption(const QString &caption) { m_loginCaption = caption; }

Q_SIGNALS:
    void statusText(StatusPanel panel, const QString &text);
    void rowsChanged();
    void rowRemoved(int index);
    void detailsChanged();
    void downloadFinished(const QString &path);
    // Failed for good: a final server answer, or the retries ran out.
    void downloadFailed(const QString &url);
    void totalSpeed(int kbPerSecond);
    void shutdownRequested();
    // Show the detail window for this slot.
    void propertiesRequested(int index);

private:
    int nextFreeIndex() const;
    void unload(int index);
    void pullFromQueue();
    void discardIfEmpty(int index);
    void describeSelected();
    QString remainingTime(int index) const;
    // The slot still holds the download that was asked about.
    bool holds(int index, const QString &path) const;
    void logLine(const QString &text, quint32 colour);

    const Settings &m_settings;
    Desktop &m_desktop;
    HistorySink &m_history;
    ProgramFolder m_folder;
    Notifier m_notifier;
    RowFactory m_makeRow;
    InactiveList *m_inactive = nullptr;

    std::array<DownloadSlot, SlotCount> m_slots;
    RowTable m_rows;
    std::array<std::unique_ptr<Transfer>, SlotCount> m_transfers;

    int m_selected = 0;
    // The selected download's progress texts are made when the details are read, not with
    // every chunk.
    mutable DownloadDetails m_details;
    mutable bool m_progressPending = false;
    bool m_apagar = false;
    QString m_loginCaption = LoginCaption;
    QByteArray m_receiveBuffer{ReceiveChunk, Qt::Uninitialized};
    QTimer m_tiempotrans;
    QTimer m_update;
    QTimer m_shutdown;
};
