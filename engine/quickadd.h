#pragma once

#include <QString>

class ActiveList;
class Desktop;
class HistorySink;
class InactiveList;
struct Settings;

// Adds an address typed by the person: checks it, asks before overwriting a file of the same
// name, and puts the download in the active list or, when that is full, in the queue.
class QuickAdd
{
public:
    QuickAdd(ActiveList &active, InactiveList &inactive, const Settings &settings, Desktop &desktop,
             HistorySink &history);

    // The destination path when the download was added; empty when it was refused.
    QString add(const QString &url);

private:
    ActiveList &m_active;
    InactiveList &m_inactive;
    const Settings &m_settings;
    Desktop &m_desktop;
    HistorySink &m_history;
};
