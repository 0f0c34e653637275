#pragma once

#include <QString>

// The folder that holds the settings, the lists and the history, and the one that holds what the
// program ships (msg/, the help and start pages): the same folder, unless the program is
// installed.
class ProgramFolder
{
public:
    explicit ProgramFolder(const QString &dir, const QString &dataDir = {});

    QString dir() const { return m_dir; }
    QString dataDir() const { return m_dataDir; }
    // `name` may hold "/" for a sub-folder, e.g. "msg/ding.wav".
    QString file(const QString &name) const;
    QString dataFile(const QString &name) const;

private:
    QString m_dir;
    QString m_dataDir;
};

// The message window routine: the error picture when `image` is empty, no picture when the
// file is missing.
void MostrarMensaje(class Desktop &desktop, const ProgramFolder &folder, const QString &text,
                    const QString &image = {});
