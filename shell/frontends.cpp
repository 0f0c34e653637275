#include "frontends.h"

#include "browserregistration.h"
#include "headless.h"
#include "nativehost.h"
#include "singleinstance.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTextStream>
#include <unistd.h>

namespace Startup {

ProgramFolder folderOf(const CommandLine &command)
{
    return programFolderFor(command, QCoreApplication::applicationDirPath(),
                            {QStandardPaths::writableLocation(QStandardPaths::AppDataLocation),
                             QStandardPaths::writableLocation(QStandardPaths::DownloadLocation)});
}

// Without it nothing the person does could be kept.
QString unwritable(const ProgramFolder &folder)
{
    if (QDir().mkpath(folder.dir()) && QFileInfo(folder.dir()).isWritable())
        return {};
    return QStringLiteral("No se puede escribir en la carpeta del programa ") + folder.dir() +
           QStringLiteral(": la configuración y las listas no se podrían guardar.");
}

QString alreadyRunning(const ProgramFolder &folder)
{
    return QStringLiteral("Corvane ya se está ejecutando con la carpeta del programa ") +
           folder.dir() + QStringLiteral(".");
}

} // namespace Startup

int runHeadless(int argc, char *argv[], const CommandLine &command)
{
    QCoreApplication app(argc, argv);
    const ProgramFolder folder = Startup::folderOf(command);
    const auto refuse = [](const QString &text, int status) {
        QTextStream(stderr) << text << '\n';
        return status;
    };
    if (const QString reason = Startup::unwritable(folder); !reason.isEmpty())
        return refuse(reason, Startup::CannotWrite);
    InstanceLock lock(folder);
    if (!lock.tryLock())
        return refuse(Startup::alreadyRunning(folder), Startup::AlreadyRunning);
    Headless headless(folder, command.urls, command.limitRate);
    return headless.exec();
}

// What the browsers use: the extension's host, and the manifests that name it.
int runForBrowsers(int argc, char *argv[], const CommandLine &command)
{
    QCoreApplication app(argc, argv);
    const QString program = QCoreApplication::applicationFilePath();
    if (command.nativeHost)
        return NativeHost(Startup::folderOf(command), program).serve(STDIN_FILENO, STDOUT_FILENO);
    QStringList written;
    const QString error = BrowserRegistration::registerBrowsers(program, command.home, written);
    for (const QString &path : std::as_const(written))
        QTextStream(stdout) << "Escrito: " << path << '\n';
    if (error.isEmpty())
        return 0;
    QTextStream(stderr) << error << '\n';
    return Startup::CannotWrite;
}
