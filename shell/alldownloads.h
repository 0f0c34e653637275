#pragma once

class ActiveList;
class Desktop;
class HistorySink;
class InactiveList;
class QString;

// The commands of the Archivo menu that act on every download at once. Each asks first (but
// "continue all"), and does nothing on No.
class AllDownloads
{
public:
    AllDownloads(ActiveList &active, InactiveList &inactive, Desktop &desktop,
                 HistorySink &history);

    // Cancel and delete the partial files: both lists, the active one, the inactive one.
    void detall();
    void detact();
    void detinactivas();
    // Moves every active download to the inactive list, keeping its partial file.
    void pauseall();
    // Moves the queued downloads to the active list while it has room; the rest wait there.
    void contall();

private:
    bool ask(const QString &question);
    void cancelActive();
    void cancelInactive();
    void log(const QString &text);

    ActiveList &m_active;
    InactiveList &m_inactive;
    Desktop &m_desktop;
    HistorySink &m_history;
};
