#pragma once

#include "programfolder.h"

#include <QString>
#include <QStringList>

// What the program was asked to do on its command line.
struct CommandLine
{
    QString home; // the program folder; empty = the executable's folder
    bool headless = false;
    bool help = false;
    bool version = false;
    bool nativeHost = false;       // the browser extension's host; what follows is the browser's
    bool registerBrowsers = false; // the host's manifests into the person's browser folders
    int limitRate = -1;            // Kb/s for this run without windows; -1: as set
    QStringList urls;              // a "zelq:" link's address comes without its prefix
    QString error;                 // a usage error, in Spanish
};

CommandLine parseCommandLine(const QStringList &arguments);

// The person's own folders, as the desktop names them.
struct UserFolders
{
    QString data;      // for the settings, the lists and the history, e.g. ~/.local/share/corvane
    QString downloads; // e.g. ~/Descargas
};

// Where this run keeps its files and finds what it ships. `--home` decides the program folder;
// without it, a program run from its build folder keeps using that folder, while an installed
// one (or one whose folder cannot be written) uses `user.data` and saves downloads in
// `user.downloads` until the settings say otherwise. msg/, the help and the start page are read
// from beside the executable, or from share/corvane once installed.
ProgramFolder programFolderFor(const CommandLine &command, const QString &executableDir,
                               const UserFolders &user);
