#pragma once

#include "ftplogin.h"

#include <QString>

class ActiveList;
class Desktop;
class HistorySink;
class InactiveList;
struct Settings;

// The last steps of adding an address the person typed: the file of that name in the default
// folder (after asking before overwriting one), then the active list while it has room, else
// the queue, else `queueFull` is shown. The destination path, or empty when nothing was added.
struct PlaceDownload
{
    ActiveList &active;
    InactiveList &inactive;
    const Settings &settings;
    Desktop &desktop;
    HistorySink &history;

    QString operator()(const QString &url, const FtpCredentials &login,
                       const QString &queueFull) const;
};
