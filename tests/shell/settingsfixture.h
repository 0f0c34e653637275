#pragma once

#include "fakedesktop.h"
#include "recordinghistory.h"
#include "settingsmodel.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

// A fresh program folder with the scripted desktop and a settings model over it.
struct SettingsFixture
{
    explicit SettingsFixture(const QString &subfolder = {})
        : model(ProgramFolder(subfolder.isEmpty() ? dir.path() : dir.filePath(subfolder)), desktop,
                history)
    {}
    QString folder() const { return QDir::toNativeSeparators(dir.path()); }
    QString path(const QString &name) const { return dir.filePath(name); }
    // A settings file of the built-in values but silent, so that a start asks nothing.
    bool saveQuiet()
    {
        model.setCheck(&Settings::wavs, false);
        return model.save();
    }
    void write(const QString &name, const QByteArray &bytes) const
    {
        QFile file(path(name));
        if (file.open(QIODevice::WriteOnly))
            file.write(bytes);
    }
    QByteArray read(const QString &name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QTemporaryDir dir;
    FakeDesktop desktop;
    RecordingHistory history;
    SettingsModel model;
};
