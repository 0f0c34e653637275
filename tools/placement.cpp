#include "placement.h"

#include "activelist.h"
#include "inactivelist.h"
#include "settings.h"

#include <QDir>

QString inFolder(const QString &folder, const QString &name)
{
    if (folder.isEmpty() || folder.endsWith(QLatin1Char('/')) || folder.endsWith(QDir::separator()))
        return folder + name;
    return folder + QDir::separator() + name;
}

Placed placeDownload(ActiveList &active, InactiveList &inactive, const Settings &settings,
                     const QString &url, const QString &path)
{
    const FtpCredentials anonymous;
    const ListRecord download{.Data = url,
                              .path = path,
                              .allowredo = true,
                              .usernm = anonymous.usernm,
                              .passw = anonymous.passw};
    if (active.rowCount() < settings.maxdescval + 1) {
        active.addnew(download);
        return Placed::Active;
    }
    if (inactive.rowCount() >= SlotCount)
        return Placed::Nowhere;
    inactive.addnew(download);
    return Placed::Inactive;
}

bool moveEntry(QStringList &from, int row, QStringList &to)
{
    if (row < 0 || row >= from.size())
        return false;
    to.append(from.takeAt(row));
    return true;
}
