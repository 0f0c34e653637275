#pragma once

#include "activelist.h"
#include "consoledesktop.h"
#include "historylog.h"
#include "inactivelist.h"
#include "quickadd.h"
#include "settingsmodel.h"

#include <QObject>
#include <QSet>
#include <QTextStream>

class QSocketNotifier;

// Corvane without a screen: the same settings, lists and engine as the windows, the person's
// side on stderr, progress on stdout. Ends when nothing is left to download.
class Headless final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Headless)

public:
    Headless(const ProgramFolder &folder, const QStringList &urls, QObject *parent = nullptr);
    ~Headless() override;

    // Runs the event loop; the exit status: 0 all finished, 1 something failed or was refused.
    int exec();

private:
    void startUp();
    void check();
    void pullWhileRoom();
    bool queueHasWork() const;
    bool anyRunning();
    void announceStarts();
    void drawProgress();
    void stopOnSignal();
    void end(int status);

    // Every history line goes to stderr and, once the log exists, to the log file the windows
    // show. The log comes later because it reads the settings, which write history lines.
    class BothHistories final : public HistorySink
    {
    public:
        explicit BothHistories(HistorySink &console) : m_console(console) {}
        void setLog(HistoryLog *log) { m_log = log; }
        void append(const QString &text, quint32 colour) override
        {
            m_console.append(text, colour);
            if (m_log)
                m_log->append(text, colour);
        }

    private:
        HistorySink &m_console;
        HistoryLog *m_log = nullptr;
    };

    QStringList m_urls;
    ConsoleDesktop m_desktop;
    ConsoleHistory m_console;
    BothHistories m_history;
    SettingsModel m_settings;
    HistoryLog m_log;
    InactiveList m_inactive;
    ActiveList m_active;
    QuickAdd m_quick;
    QTextStream m_out;
    bool m_terminal;
    bool m_failed = false;
    bool m_ending = false;
    int m_progressLines = 0;
    QSet<QString> m_announced;
    QSocketNotifier *m_signals = nullptr;
};
