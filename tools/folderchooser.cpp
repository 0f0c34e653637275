#include "folderchooser.h"

#include "desktop.h"
#include "placement.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStorageInfo>
#include <cerrno>
#include <sys/stat.h>
#include <system_error>

namespace {

bool readableFolder(const QString &path)
{
    const QFileInfo info(path);
    return info.isDir() && info.isReadable() && info.isExecutable();
}

} // namespace

FolderChooser::FolderChooser(Desktop &desktop, std::function<bool()> getunload)
    : m_desktop(desktop), m_getunload(std::move(getunload)), m_drive(QDir::homePath()),
      m_path(m_drive)
{}

QList<FolderChooser::Drive> FolderChooser::drives()
{
    QList<Drive> found{
        {QDir::homePath(), QStringLiteral("Carpeta personal (%1)").arg(QDir::homePath())}};
    for (const QStorageInfo &volume : QStorageInfo::mountedVolumes()) {
        const QString root = volume.rootPath();
        // Single files mounted into the tree (as containers do) are no drives.
        if (!QFileInfo(root).isDir() || root == QDir::homePath())
            continue;
        const QString name = volume.displayName();
        found.append({root, name == root ? root : name + QStringLiteral(" (") + root + u')'});
    }
    return found;
}

void FolderChooser::setPath(const QString &path)
{
    m_path = path;
}

bool FolderChooser::setDrive(const QString &root)
{
    if (!readableFolder(root))
        return false;
    m_drive = root;
    m_path = root;
    return true;
}

bool FolderChooser::goTo(const QString &folder)
{
    const QString path = QDir::cleanPath(folder);
    if (!QFileInfo(path).isDir())
        return false;
    // The drive whose root holds the folder most closely.
    QString best;
    for (const Drive &drive : drives()) {
        const QString root = drive.root;
        const bool holds =
            path == root || path.startsWith(root.endsWith(u'/') ? root : root + u'/');
        if (holds && root.size() > best.size())
            best = root;
    }
    if (best.isEmpty() || !setDrive(best))
        return false;
    m_path = path;
    return true;
}

QString FolderChooser::newfolder()
{
    const std::optional<QString> name =
        m_desktop.inputBox(QStringLiteral("Escriba el nombre de la nueva carpeta"), QString(),
                           QStringLiteral("Nueva Carpeta"));
    if (!name || name->isEmpty())
        return {};
    const QString failed = QStringLiteral("Error al crear la carpeta: ");
    // A separator would make a folder somewhere else than where the person is looking.
    if (name->contains(u'/')) {
        m_desktop.messageBox(failed + QStringLiteral("el nombre no puede contener «/»"),
                             Desktop::Icon::Critical);
        return {};
    }
    QString path = inFolder(m_path, *name);
    if (::mkdir(QFile::encodeName(path).constData(), 0777) != 0) {
        const int error = errno;
        m_desktop.messageBox(failed + QString::fromStdString(std::system_category().message(error)),
                             Desktop::Icon::Critical);
        return {};
    }
    return path;
}
