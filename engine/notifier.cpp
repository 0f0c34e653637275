#include "notifier.h"

#include "desktop.h"
#include "settings.h"

#include <QFileInfo>

Notifier::Notifier(const Settings &settings, Desktop &desktop, const ProgramFolder &folder)
    : m_settings(settings), m_desktop(desktop), m_folder(folder)
{}

void Notifier::playSound(const QString &name)
{
    const QString path = m_folder.dataFile(QStringLiteral("msg/") + name);
    if (m_settings.wavs == 1 && QFileInfo::exists(path))
        m_desktop.playSound(path);
}

void Notifier::message(const QString &text, const QString &picture)
{
    MostrarMensaje(m_desktop, m_folder, text, m_folder.dataFile(QStringLiteral("msg/") + picture));
}

void Notifier::reportFailure(const QString &text)
{
    if (m_settings.msgdialog) {
        playSound(QStringLiteral("ding.wav"));
        message(text, QStringLiteral("error.gif"));
    }
    if (m_settings.msgsys)
        m_desktop.raiseTrayIndicator(text);
}
