#pragma once

#include "activelist.h"
#include "consoledesktop.h"
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

    QStringList m_urls;
    ConsoleDesktop m_desktop;
    ConsoleHistory m_history;
    SettingsModel m_settings;
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
