#include "recentdownloads.h"

void RecentDownloads::add(const QString &path)
{
    // A file downloaded again moves to the top instead of showing twice.
    m_paths.removeAll(path);
    m_paths.prepend(path);
    if (m_paths.size() > Size)
        m_paths.removeLast();
    Q_EMIT changed();
}
