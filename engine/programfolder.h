#pragma once

#include <QString>

// The folder that holds the settings, the lists and the history, and the one that holds what the
// program ships (msg/, the help and start pages): the same folder, unless the program is
// installed. Also where downloads go while the settings name no folder: "download" in the
// folder, unless another is given (an installed copy's is the person's downloads folder).
class ProgramFolder
{
public:
    explicit ProgramFolder(const QString &dir, const QString &dataDir = {},
                           const QString &downloadDir = {});

    QString dir() const { return m_dir; }
    QString dataDir() const { return m_dataDir; }
    QString downloadDir() const { return m_downloadDir; }
    // `name` may hold "/" for a sub-folder, e.g. "msg/ding.wav".
    QString file(const QString &name) const;
    QString dataFile(const QString &name) const;

private:
    QString m_dir;
    QString m_dataDir;
    QString m_downloadDir;
};

// The message window routine: the error picture when `image` is empty, no picture when the
// file is missing.
void MostrarMensaje(class Desktop &desktop, const ProgramFolder &folder, const QString &text,
                    const QString &image = {});
