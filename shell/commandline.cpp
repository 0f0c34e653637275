#include "commandline.h"

#include "singleinstance.h"

#include <QDir>
#include <QFileInfo>

CommandLine parseCommandLine(const QStringList &arguments)
{
    CommandLine command;
    for (int i = 1; i < arguments.size(); ++i) {
        const QString &argument = arguments[i];
        if (argument == QLatin1String("--home")) {
            if (i + 1 >= arguments.size()) {
                command.error = QStringLiteral("Falta la carpeta después de --home");
                break;
            }
            command.home = arguments[++i];
        } else if (argument.startsWith(QLatin1String("--home="))) {
            command.home = argument.mid(7);
        } else if (argument == QLatin1String("--limit-rate") ||
                   argument.startsWith(QLatin1String("--limit-rate="))) {
            const bool apart = argument == QLatin1String("--limit-rate");
            if (apart && i + 1 >= arguments.size()) {
                command.error = QStringLiteral("Falta la velocidad después de --limit-rate");
                break;
            }
            const QString value = apart ? arguments[++i] : argument.mid(13);
            bool number = false;
            command.limitRate = value.toInt(&number);
            if (!number || command.limitRate < 0 || command.limitRate > 10'000'000) {
                command.error = QStringLiteral("Velocidad no válida para --limit-rate: ") + value;
                break;
            }
        } else if (argument == QLatin1String("--headless")) {
            command.headless = true;
        } else if (argument == QLatin1String("--help") || argument == QLatin1String("-h")) {
            command.help = true;
        } else if (argument == QLatin1String("--version")) {
            command.version = true;
        } else if (argument == QLatin1String("--native-host")) {
            // The browser adds its own arguments (the extension, the manifest's path).
            command.nativeHost = true;
            break;
        } else if (argument == QLatin1String("--register-browsers")) {
            command.registerBrowsers = true;
        } else if (argument.startsWith(QLatin1String("--"))) {
            command.error = QStringLiteral("Opción desconocida: ") + argument;
            break;
        } else {
            command.urls.append(withoutZelq(argument));
        }
    }
    return command;
}

ProgramFolder programFolderFor(const CommandLine &command, const QString &executableDir,
                               const UserFolders &user)
{
    const QString shared = QDir::cleanPath(executableDir + QStringLiteral("/../share/corvane"));
    // The build puts msg/, the help and the start page beside the executable.
    const QString dataDir =
        QFileInfo(shared + QStringLiteral("/msg")).isDir() ? shared : executableDir;
    if (!command.home.isEmpty())
        return ProgramFolder(command.home, dataDir);
    if (dataDir == executableDir && QFileInfo(executableDir).isWritable())
        return ProgramFolder(executableDir);
    // The per-user data folder is hidden: downloads kept there would never be found.
    return ProgramFolder(user.data, dataDir, user.downloads);
}
