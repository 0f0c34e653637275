#pragma once

#include "programfolder.h"

#include <QObject>
#include <QSet>
#include <functional>

class QClipboard;

// Watches what the person copies for download addresses: an http://, https:// or ftp:// address
// whose file name ends in one of the link grabber's endings (in any letter case). Each address
// is offered once a run, however often it is copied.
class ClipboardWatch final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ClipboardWatch)

public:
    // `watching` says whether the person wants it now; the endings are read from `folder` at
    // each copy, so a change in the link grabber counts at once.
    ClipboardWatch(QClipboard *clipboard, const ProgramFolder &folder,
                   std::function<bool()> watching, QObject *parent = nullptr);

    // The address `text` holds, blanks around it dropped; empty when it holds none to offer.
    static QString downloadIn(const QString &text, const QStringList &endings);

Q_SIGNALS:
    void offered(const QString &url);

private:
    void copied();

    QClipboard *m_clipboard;
    ProgramFolder m_folder;
    std::function<bool()> m_watching;
    QSet<QString> m_offered;
};
