#pragma once

#include <QString>
#include <QStringList>

// What the program was asked to do on its command line.
struct CommandLine
{
    QString home; // the program folder; empty = the executable's folder
    bool headless = false;
    bool help = false;
    bool version = false;
    QStringList urls;
    QString error; // a usage error, in Spanish
};

CommandLine parseCommandLine(const QStringList &arguments);
QString programFolderFor(const CommandLine &command, const QString &executableDir);
