#pragma once

#include "fakedesktop.h"
#include "files.h"
#include "recordinghistory.h"
#include "settingsmodel.h"

#include <QDir>
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
    void write(const QString &name, const QByteArray &bytes) const { writeFile(path(name), bytes); }
    QByteArray read(const QString &name) const { return readFile(path(name)); }

    QTemporaryDir dir;
    FakeDesktop desktop;
    RecordingHistory history;
    SettingsModel model;
};
