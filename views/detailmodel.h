#pragma once

#include "downloadinfo.h"

#include <QObject>
#include <functional>
#include <optional>

class ActiveList;
class InactiveList;

// What the detail window shows: the download it was last asked about, read again on every
// refresh while that download is still in its list. Once it has gone (finished and removed,
// cancelled, moved to the other list) the last texts stay.
class DetailModel final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(DetailModel)

public:
    // Reads the download, or nothing once it has gone.
    using Source = std::function<std::optional<DownloadInfo>()>;

    explicit DetailModel(QObject *parent = nullptr) : QObject(parent) {}

    void describe(Source source);
    void refresh();
    const DownloadInfo &info() const { return m_info; }

Q_SIGNALS:
    void changed();

private:
    Source m_source;
    DownloadInfo m_info;
};

// The download in slot `index` of a list, for as long as that slot holds it: a slot that is
// emptied and filled again with another download does not count.
DetailModel::Source activeSource(ActiveList &list, int index);
DetailModel::Source inactiveSource(InactiveList &list, int index);
