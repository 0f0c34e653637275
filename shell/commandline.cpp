#include "commandline.h"

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
        } else if (argument == QLatin1String("--headless")) {
            command.headless = true;
        } else if (argument == QLatin1String("--help") || argument == QLatin1String("-h")) {
            command.help = true;
        } else if (argument == QLatin1String("--version")) {
            command.version = true;
        } else if (argument.startsWith(QLatin1String("--"))) {
            command.error = QStringLiteral("Opción desconocida: ") + argument;
            break;
        } else {
            command.urls.append(argument);
        }
    }
    return command;
}

QString programFolderFor(const CommandLine &command, const QString &executableDir)
{
    return command.home.isEmpty() ? executableDir : command.home;
}
