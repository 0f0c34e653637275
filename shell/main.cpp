#include "commandline.h"
#include "headless.h"
#include "programfolder.h"
#include "qtdesktop.h"

#include <QApplication>
#include <QMainWindow>
#include <QTextStream>

namespace {

const char Usage[] =
    "Uso: corvane [--home CARPETA] [--headless [URL ...]]\n"
    "\n"
    "Gestor de descargas HTTP y FTP.\n"
    "\n"
    "  --home CARPETA  carpeta del programa (configuración, listas e historial);\n"
    "                  por defecto, la carpeta del ejecutable\n"
    "  --headless      sin ventanas: descarga las URL dadas y las listas guardadas,\n"
    "                  muestra el progreso y termina cuando no queda nada por descargar\n"
    "                  (0: todo terminado, 1: alguna descarga falló o fue rechazada)\n"
    "  --help          muestra esta ayuda\n"
    "  --version       muestra la versión\n";

int runWindows(int argc, char *argv[], const CommandLine &command)
{
    QApplication app(argc, argv);
    const ProgramFolder folder(programFolderFor(command, QCoreApplication::applicationDirPath()));
    QtDesktop desktop(folder);
    QMainWindow window;
    window.setObjectName(QStringLiteral("main"));
    window.setWindowTitle(QStringLiteral("Corvane"));
    window.resize(800, 500);
    desktop.setMainWindow(&window);
    window.show();
    return QApplication::exec();
}

int runHeadless(int argc, char *argv[], const CommandLine &command)
{
    QCoreApplication app(argc, argv);
    const ProgramFolder folder(programFolderFor(command, QCoreApplication::applicationDirPath()));
    Headless headless(folder, command.urls);
    return headless.exec();
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication::setApplicationName(QStringLiteral("Corvane"));
    QCoreApplication::setApplicationVersion(QStringLiteral(CORVANE_VERSION));
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    const CommandLine command = parseCommandLine(arguments);
    if (!command.error.isEmpty() || (!command.headless && !command.urls.isEmpty())) {
        QTextStream err(stderr);
        err << (command.error.isEmpty() ? QStringLiteral("Las URL solo se aceptan con --headless")
                                        : command.error)
            << "\n\n"
            << QString::fromUtf8(Usage);
        return 2;
    }
    if (command.help) {
        QTextStream(stdout) << QString::fromUtf8(Usage);
        return 0;
    }
    if (command.version) {
        QTextStream(stdout) << "Corvane " << CORVANE_VERSION << '\n';
        return 0;
    }
    return command.headless ? runHeadless(argc, argv, command) : runWindows(argc, argv, command);
}
