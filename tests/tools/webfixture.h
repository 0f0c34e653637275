#pragma once

#include "fakedesktop.h"
#include "notifier.h"
#include "settings.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

// What the browser works with: a program folder holding its sound and picture, a scripted
// desktop, the notifier, and an `añadir` that records the addresses reaching it.
struct WebFixture
{
    QTemporaryDir dir;
    Settings settings;
    FakeDesktop desktop;
    ProgramFolder folder{dir.path()};
    Notifier notifier{settings, desktop, folder};
    QStringList added;

    WebFixture()
    {
        QDir(dir.path()).mkdir("msg");
        for (const QString &name : {QStringLiteral("ding.wav"), QStringLiteral("download.gif")})
            QFile::copy(qEnvironmentVariable("CORVANE_SOURCE_DIR") + "/msg/" + name,
                        folder.file("msg/" + name));
    }

    // Refuses an empty address, as the main window's does.
    std::function<bool(const QString &)> añadir()
    {
        return [this](const QString &url) {
            added.append(url);
            return !url.isEmpty();
        };
    }

    // `texts` with "%1" standing for the program folder.
    QStringList inFolder(QStringList texts) const
    {
        for (QString &text : texts)
            text = text.arg(folder.dir());
        return texts;
    }
};
