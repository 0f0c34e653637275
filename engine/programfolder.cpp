#include "programfolder.h"

#include "desktop.h"

#include <QDir>
#include <QFileInfo>

namespace {

QString withoutTrailingSeparator(const QString &dir)
{
    QString result = QDir::toNativeSeparators(dir);
    while (result.size() > 1 && result.endsWith(QDir::separator()))
        result.chop(1);
    return result;
}

} // namespace

ProgramFolder::ProgramFolder(const QString &dir, const QString &dataDir, const QString &downloadDir)
    : m_dir(withoutTrailingSeparator(dir)),
      m_dataDir(dataDir.isEmpty() ? m_dir : withoutTrailingSeparator(dataDir)),
      m_downloadDir(downloadDir.isEmpty() ? file(QStringLiteral("download"))
                                          : withoutTrailingSeparator(downloadDir))
{}

QString ProgramFolder::file(const QString &name) const
{
    return m_dir + QDir::separator() + QDir::toNativeSeparators(name);
}

QString ProgramFolder::dataFile(const QString &name) const
{
    return m_dataDir + QDir::separator() + QDir::toNativeSeparators(name);
}

void MostrarMensaje(Desktop &desktop, const ProgramFolder &folder, const QString &text,
                    const QString &image)
{
    const QString picture =
        image.isEmpty() ? folder.dataFile(QStringLiteral("msg/error.gif")) : image;
    desktop.showMessageWindow(text, QFileInfo::exists(picture) ? picture : QString());
}
