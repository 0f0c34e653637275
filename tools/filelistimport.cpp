#include "filelistimport.h"

#include "desktop.h"
#include "placement.h"
#include "settings.h"

#include <QFile>

FileListImport::FileListImport(ActiveList &active, InactiveList &inactive, const Settings &settings,
                               Desktop &desktop, QObject *parent)
    : QObject(parent), m_active(active), m_inactive(inactive), m_settings(settings),
      m_desktop(desktop)
{}

bool FileListImport::loadlist()
{
    // The dialog starts in the download folder, with no file name.
    const QString path = m_desktop.openFileDialog(m_settings.defdir, QString());
    if (path.isEmpty())
        return false;
    m_destdir = m_settings.defdir;
    m_url.clear();
    m_si.clear();
    m_no.clear();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        m_desktop.messageBox(file.errorString(), Desktop::Icon::Critical);
    } else {
        ListFile list = readListFile(file.readAll());
        m_url = list.url;
        m_si = list.names;
        if (list.failure)
            m_desktop.messageBox(*list.failure, Desktop::Icon::Critical);
    }
    Q_EMIT changed();
    return true;
}

void FileListImport::setUrl(const QString &url)
{
    m_url = url;
    Q_EMIT changed();
}

void FileListImport::setDestdir(const QString &folder)
{
    m_destdir = folder;
    Q_EMIT changed();
}

void FileListImport::tosi(int row)
{
    if (moveEntry(m_no, row, m_si))
        Q_EMIT changed();
}

void FileListImport::tono(int row)
{
    if (moveEntry(m_si, row, m_no))
        Q_EMIT changed();
}

void FileListImport::brdir()
{
    const QString folder = m_desktop.chooseFolder(m_destdir);
    if (!folder.isEmpty())
        setDestdir(folder);
}

void FileListImport::addtolist()
{
    QString base = m_url;
    if (!base.endsWith(QLatin1Char('/')))
        base += QLatin1Char('/');
    for (const QString &name : std::as_const(m_si)) {
        if (placeDownload(m_active, m_inactive, m_settings, base + name,
                          inFolder(m_destdir, name)) == Placed::Nowhere)
            m_desktop.messageBox(QStringLiteral("Se ha alcanzado el límite de descargas"),
                                 Desktop::Icon::Critical);
    }
}
