#include "programfolder.h"

#include "desktop.h"

#include <QDir>
#include <QFileInfo>

ProgramFolder::ProgramFolder(const QString &dir) : m_dir(QDir::toNativeSeparators(dir))
{
    while (m_dir.size() > 1 && m_dir.endsWith(QDir::separator()))
        m_dir.chop(1);
}

QString ProgramFolder::file(const QString &name) const
{
    return m_dir + QDir::separator() + QDir::toNativeSeparators(name);
}

void MostrarMensaje(Desktop &desktop, const ProgramFolder &folder, const QString &text,
                    const QString &image)
{
    const QString picture = image.isEmpty() ? folder.file(QStringLiteral("msg/error.gif")) : image;
    desktop.showMessageWindow(text, QFileInfo::exists(picture) ? picture : QString());
}
