#pragma once

// Where the link grabber and the file-list import put what the person chose.

#include <QStringList>

class ActiveList;
class InactiveList;
struct Settings;

// `name` inside `folder`, with one separator between them whether or not the folder ends in one.
QString inFolder(const QString &folder, const QString &name);

// Where the link grabber and the file-list import put an address: the active list while it has
// room (its row count includes the unused first row), else the queue while it has room.
enum class Placed
{
    Active,
    Inactive,
    Nowhere
};
// Added as a new download that may resume, with the anonymous login, nothing remembered.
Placed placeDownload(ActiveList &active, InactiveList &inactive, const Settings &settings,
                     const QString &url, const QString &path);

// Moves entry `row` of `from` to the end of `to`; false when there is no such entry.
bool moveEntry(QStringList &from, int row, QStringList &to);
