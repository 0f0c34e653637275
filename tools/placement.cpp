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
    const QString user = QStringLiteral("anonymous");
    const QString password = QStringLiteral("freepwd");
    if (active.rowCount() < settings.maxdescval + 1) {
        active.addnew(url, path, 0, 0, true, 0, false, user, password, false);
        return Placed::Active;
    }
    if (inactive.rowCount() >= SlotCount)
        return Placed::Nowhere;
    inactive.addnew(url, path, 0, 0, true, 0, false, user, password, false, false);
    return Placed::Inactive;
}

bool moveEntry(QStringList &from, int row, QStringList &to)
{
    if (row < 0 || row >= from.size())
        return false;
    to.append(from.takeAt(row));
    return true;
}
