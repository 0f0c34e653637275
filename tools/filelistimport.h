#pragma once

#include "listfile.h"

#include <QObject>
#include <QStringList>

class ActiveList;
class Desktop;
class InactiveList;
struct Settings;

// The logic of the file-list import `oldsupport`: a base address and names read from a list
// file, sorted by the person into `si` and `no`; the `si` names are added to the downloads.
class FileListImport final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FileListImport)

public:
    FileListImport(ActiveList &active, InactiveList &inactive, const Settings &settings,
                   Desktop &desktop, QObject *parent = nullptr);

    // The menu entry `loadlist`: asks for a list file and reads it into a fresh window. False
    // when the person chose none; a file that cannot be read all through is reported and what
    // was read of it is kept.
    bool loadlist();

    QString url() const { return m_url; }
    const QStringList &si() const { return m_si; }
    const QStringList &no() const { return m_no; }
    QString destdir() const { return m_destdir; }

    // The person's commands; rows are those of the lists as shown, -1 is no selection.
    void setUrl(const QString &url);
    void setDestdir(const QString &folder);
    void tosi(int row);
    void tono(int row);
    void brdir();
    // Adds every `si` name (the base address, one "/", the name) to the downloads.
    void addtolist();

Q_SIGNALS:
    void changed();

private:
    ActiveList &m_active;
    InactiveList &m_inactive;
    const Settings &m_settings;
    Desktop &m_desktop;

    QString m_url;
    QStringList m_si;
    QStringList m_no;
    QString m_destdir;
};
