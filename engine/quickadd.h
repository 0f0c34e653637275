#pragma once

#include "downloadextras.h"
#include "ftplogin.h"

#include <QString>

class ActiveList;
class Desktop;
class HistorySink;
class InactiveList;
struct Settings;

// Addresses the person types: the quick-add bar and the "new URL" prompt. Both check the
// address, ask before overwriting a file of the same name in the default folder, and put the
// download in the active list or, when that is full, in the queue. Each returns the destination
// path, or an empty text when nothing was added.
class QuickAdd
{
public:
    QuickAdd(ActiveList &active, InactiveList &inactive, const Settings &settings, Desktop &desktop,
             HistorySink &history);

    // `extras` come with a link from the person's web browser.
    QString add(const QString &url, const DownloadExtras &extras = {});
    // Asks for the address, offering the clipboard's when it is one, and for an FTP login.
    QString newurl(const QString &clipboard);

private:
    QString place(const QString &url, const FtpCredentials &login, const QString &queueFull,
                  const DownloadExtras &extras = {});

    ActiveList &m_active;
    InactiveList &m_inactive;
    const Settings &m_settings;
    Desktop &m_desktop;
    HistorySink &m_history;
};
