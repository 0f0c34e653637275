#pragma once

#include "fakedesktop.h"
#include "recordinghistory.h"
#include "settingsmodel.h"

#include <QDir>
#include <QStringList>
#include <QTemporaryDir>

// A settings model over a fresh program folder, with the scripted desktop.
struct SettingsFixture
{
    explicit SettingsFixture(const QString &subfolder = {})
        : model(ProgramFolder(subfolder.isEmpty() ? dir.path() : dir.filePath(subfolder)), desktop,
                history)
    {}
    QString folder() const { return QDir::toNativeSeparators(dir.path()); }
    QString iniPath() const { return dir.filePath(QStringLiteral("corvane.ini")); }

    QTemporaryDir dir;
    FakeDesktop desktop;
    RecordingHistory history;
    SettingsModel model;
};
