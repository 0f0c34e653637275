#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <optional>

// What a list file holds: the base address and the file names under it. The items are separated
// by commas or line ends; the first is skipped, the second is the address, and of the rest only
// every second one is a name (so an odd last item is dropped). `failure` describes what ended
// the reading early; what was read before it is kept.
struct ListFile
{
    QString url;
    QStringList names;
    std::optional<QString> failure;
};
ListFile readListFile(const QByteArray &content);
