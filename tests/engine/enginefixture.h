#pragma once

#include "activelist.h"
#include "fakedesktop.h"
#include "files.h"
#include "inactivelist.h"
#include "recordinghistory.h"
#include "settings.h"
#include "transfer.h"

#include <QRandomGenerator>
#include <QTemporaryDir>

// The same bytes for the same size, so a failure can be repeated.
inline QByteArray randomBytes(int size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    QRandomGenerator generator(size);
    for (char &byte : bytes)
        byte = char(generator.bounded(256));
    return bytes;
}

// A folder for a real server to serve, holding one file of random bytes.
struct ServedFolder
{
    QTemporaryDir root;
    QByteArray bytes;

    ServedFolder(const QString &name, int size) : bytes(randomBytes(size))
    {
        writeFile(root.filePath(name), bytes);
    }
};

// Both lists wired together over a fresh program folder and a scripted desktop.
struct EngineFixture
{
    QTemporaryDir dir;
    Settings settings;
    FakeDesktop desktop;
    RecordingHistory history;
    ProgramFolder folder{dir.path()};
    ActiveList active{settings, desktop, history, folder};
    InactiveList inactive{settings, desktop, history, folder};

    EngineFixture()
    {
        settings.defdir = dir.path() + QLatin1Char('/');
        active.setInactiveList(&inactive);
        inactive.setActiveList(&active);
    }

    QString path(const QString &name) const { return dir.filePath(name); }

    QByteArray read(const QString &name) const { return readFile(path(name)); }
    void write(const QString &name, const QByteArray &bytes) const { writeFile(path(name), bytes); }

    // A new download of `url` into the folder, started at once; its index.
    int add(const QString &url, const QString &name = QStringLiteral("f.bin"),
            const QString &user = {}, const QString &password = {})
    {
        return active.addnew(
            ListRecord{.Data = url, .path = path(name), .usernm = user, .passw = password});
    }

    DownloadStatus status(int index) const { return active.slot(index).status; }
    Transfer &transfer(int index) const { return *active.transfer(index); }
};
