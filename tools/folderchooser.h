#pragma once

#include <QList>
#include <QString>
#include <functional>

class Desktop;

// The logic of the folder chooser `folder`: the drives (the home folder first, then the mounted
// file systems), the chosen folder, making a new folder in it, and whether the window may close.
class FolderChooser
{
public:
    struct Drive
    {
        QString root;
        QString label;
    };

    // `getunload` tells whether the program is ending; only then may the window close.
    FolderChooser(Desktop &desktop, std::function<bool()> getunload);

    static QList<Drive> drives();

    QString drive() const { return m_drive; }
    // The chosen folder: the result of the window.
    QString path() const { return m_path; }
    void setPath(const QString &path);
    // Moves to the drive with that root; false, and nothing changes, when it cannot be read.
    bool setDrive(const QString &root);
    // Moves to an existing folder, on the drive that holds it; false when it is no folder.
    bool goTo(const QString &folder);

    // Asks for a name and makes that folder inside the chosen one; the new folder's path, or an
    // empty text when nothing was made (the person has been told why).
    QString newfolder();

    bool mayClose() const { return m_getunload && m_getunload(); }

private:
    Desktop &m_desktop;
    std::function<bool()> m_getunload;
    QString m_drive;
    QString m_path;
};
