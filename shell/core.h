#pragma once

#include "activelist.h"
#include "alldownloads.h"
#include "historylog.h"
#include "inactivelist.h"
#include "quickadd.h"
#include "settingsmodel.h"

class Desktop;

// The program without a front end: the settings, the history log and both download lists, read
// in this order and written on the way out. The program with windows and the headless mode each
// add their desktop and their front end to it.
class Core final
{
    Q_DISABLE_COPY_MOVE(Core)

public:
    // History lines go to the log and, when given, to `echo` as well.
    Core(const ProgramFolder &folder, Desktop &desktop, HistorySink *echo = nullptr);

    // The settings first: the downloads of the saved lists take their number of retries from
    // them; then the history (which reads where it is kept from the settings), then the lists.
    void load();
    // Every download stops where it is, to resume on the next start; the lists and the history
    // are written.
    void save();

    const ProgramFolder &folder() const { return m_folder; }
    SettingsModel &settings() { return m_settings; }
    HistoryLog &history() { return m_log; }
    ActiveList &active() { return m_active; }
    const ActiveList &active() const { return m_active; }
    InactiveList &inactive() { return m_inactive; }
    const InactiveList &inactive() const { return m_inactive; }
    QuickAdd &quickAdd() { return m_quick; }
    AllDownloads &all() { return m_all; }

private:
    // The settings beyond the main file that the downloads keep to.
    void applyExtras();
    // The settings write history lines and the log reads the settings: lines reach the log
    // through this, pointed at it once both exist.
    class Relay final : public HistorySink
    {
    public:
        HistoryLog *log = nullptr;
        HistorySink *echo = nullptr;
        void append(const QString &text, quint32 colour) override
        {
            if (echo)
                echo->append(text, colour);
            if (log)
                log->append(text, colour);
        }
    };

    ProgramFolder m_folder;
    Relay m_history;
    SettingsModel m_settings;
    HistoryLog m_log;
    InactiveList m_inactive;
    ActiveList m_active;
    QuickAdd m_quick;
    AllDownloads m_all;
};
