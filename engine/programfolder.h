#pragma once

#include <QString>

// The folder that holds the settings, the lists, the history and msg/.
class ProgramFolder
{
public:
    explicit ProgramFolder(const QString &dir);

    QString dir() const { return m_dir; }
    // `name` may hold "/" for a sub-folder, e.g. "msg/ding.wav".
    QString file(const QString &name) const;

private:
    QString m_dir;
};

// The message window routine: the error picture when `image` is empty, no picture when the
// file is missing.
void MostrarMensaje(class Desktop &desktop, const ProgramFolder &folder, const QString &text,
                    const QString &image = {});
