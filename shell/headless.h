#pragma once

#include "consoledesktop.h"
#include "core.h"

#include <QObject>
#include <QSet>
#include <QTextStream>

// Corvane without a screen: the same core as the windows, the person's side on stderr, progress
// on stdout. Ends when nothing is left to download.
class Headless final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Headless)

public:
    // `speedLimit` in Kb/s replaces the settings' for this run; -1 keeps theirs.
    Headless(const ProgramFolder &folder, const QStringList &urls, int speedLimit = -1,
             QObject *parent = nullptr);

    // Runs the event loop; the exit status: 0 all finished, 1 something failed or was refused.
    int exec();

private:
    void startUp();
    void check();
    void pullWhileRoom();
    bool queueHasWork() const;
    bool anyRunning() const;
    void announceStart(int index);
    void drawProgress();
    void stopOnSignal();
    void end(int status);

    QStringList m_urls;
    int m_speedLimit;
    ConsoleDesktop m_desktop;
    ConsoleHistory m_console;
    Core m_core;
    QTextStream m_out;
    bool m_terminal;
    bool m_failed = false;
    bool m_ending = false;
    int m_progressLines = 0;
};
