#pragma once

#include <QObject>
#include <QStringList>

// The files of the last finished downloads, newest first, for the `ultimas` menu and the tray.
class RecentDownloads final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(RecentDownloads)

public:
    static constexpr int Size = 7; // the items `ultdescarga` 0 to 6

    explicit RecentDownloads(QObject *parent = nullptr) : QObject(parent) {}

    const QStringList &paths() const { return m_paths; }
    void add(const QString &path);

Q_SIGNALS:
    void changed();

private:
    QStringList m_paths;
};
