#pragma once

#include "programfolder.h"

class Desktop;
struct Settings;

// Sounds and message windows as the settings allow them.
class Notifier
{
public:
    Notifier(const Settings &settings, Desktop &desktop, const ProgramFolder &folder);

    // `name` is a file of msg/, e.g. "ding.wav"; nothing plays when sounds are off or it is
    // missing.
    void playSound(const QString &name);
    // A message window with a picture of msg/, e.g. "download.gif".
    void message(const QString &text, const QString &picture);
    // A download that failed for good: a window, the tray indicator or nothing, as chosen.
    void reportFailure(const QString &text);

    Desktop &desktop() { return m_desktop; }
    const ProgramFolder &folder() const { return m_folder; }

private:
    const Settings &m_settings;
    Desktop &m_desktop;
    ProgramFolder m_folder;
};
