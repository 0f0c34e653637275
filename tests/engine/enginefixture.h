#pragma once

#include "activelist.h"
#include "fakedesktop.h"
#include "inactivelist.h"
#include "recordinghistory.h"
#include "settings.h"

#include <QFile>
#include <QTemporaryDir>

// Both lists wired together over a fresh program folder, a scripted desktop and plain rows.
struct EngineFixture
{
    QTemporaryDir dir;
    Settings settings;
    FakeDesktop desktop;
    RecordingHistory history;
    ProgramFolder folder{dir.path()};
    ActiveList active{settings, desktop, history, folder, plainRows()};
    InactiveList inactive{settings, desktop, history, folder, plainRows()};

    EngineFixture()
    {
        settings.defdir = dir.path() + QLatin1Char('/');
        active.setInactiveList(&inactive);
        inactive.setActiveList(&active);
    }

    static RowFactory plainRows()
    {
        return [](int) { return std::make_unique<RowState>(); };
    }

    QString path(const QString &name) const { return dir.filePath(name); }

    QByteArray read(const QString &name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    void write(const QString &name, const QByteArray &bytes) const
    {
        QFile file(path(name));
        if (file.open(QIODevice::WriteOnly))
            file.write(bytes);
    }

    RowState &row(int index) { return static_cast<RowState &>(*active.rowAt(index)); }
};
