#include "browserregistration.h"
#include "browserstartup.h"
#include "commandline.h"
#include "headless.h"
#include "mainwindow.h"
#include "nativehost.h"
#include "program.h"
#include "qtdesktop.h"
#include "singleinstance.h"

#include <QApplication>
#include <QDir>
#include <QLibraryInfo>
#include <QMessageBox>
#include <QStandardPaths>
#include <QTextStream>
#include <QTranslator>
#include <unistd.h>

namespace {

const char Usage[] =
    "Uso: corvane [--home CARPETA] [URL ...]\n"
    "       corvane [--home CARPETA] --headless [URL ...]\n"
    "       corvane [--home CARPETA] --register-browsers\n"
    "\n"
    "Gestor de descargas HTTP, HTTPS y FTP.\n"
    "\n"
    "  URL             direcciones que se añaden como desde la barra de añadido rápido;\n"
    "                  si Corvane ya está abierto con la misma carpeta, se le pasan a él\n"
    "  --home CARPETA  carpeta del programa (configuración, listas e historial);\n"
    "                  por defecto, la carpeta del ejecutable o, si el programa está\n"
    "                  instalado, ~/.local/share/corvane\n"
    "  --headless      sin ventanas: descarga las URL dadas y las listas guardadas,\n"
    "                  muestra el progreso y termina cuando no queda nada por descargar\n"
    "                  (0: todo terminado, 1: alguna descarga falló o fue rechazada,\n"
    "                  3: la carpeta ya la usa otro Corvane)\n"
    "  --register-browsers\n"
    "                  da a conocer a Chromium y Firefox el programa que recibe los\n"
    "                  enlaces de la extensión de Corvane (el paquete ya lo hace)\n"
    "  --native-host   lo que el navegador arranca para la extensión: mensajes por la\n"
    "                  entrada y la salida estándar\n"
    "  --help          muestra esta ayuda\n"
    "  --version       muestra la versión\n";

// Exit statuses beside 0 and the headless mode's 1 (a download failed).
constexpr int CannotWrite = 1;
constexpr int UsageError = 2;
constexpr int AlreadyRunning = 3;

// Qt's own dialogs and buttons ("Sí", "Cancelar", the file dialogs) speak Spanish too.
void installSpanish(QApplication &app)
{
    auto *translator = new QTranslator(&app);
    if (translator->load(QStringLiteral("qt_es"),
                         QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QApplication::installTranslator(translator);
}

ProgramFolder folderOf(const CommandLine &command)
{
    return programFolderFor(command, QCoreApplication::applicationDirPath(),
                            QStandardPaths::writableLocation(QStandardPaths::AppDataLocation));
}

// Made on first start; without it nothing the person does could be kept.
bool writable(const ProgramFolder &folder)
{
    return QDir().mkpath(folder.dir()) && QFileInfo(folder.dir()).isWritable();
}

QString cannotWrite(const ProgramFolder &folder)
{
    return QStringLiteral("No se puede escribir en la carpeta del programa ") + folder.dir() +
           QStringLiteral(": la configuración y las listas no se podrían guardar.");
}

QString alreadyRunning(const ProgramFolder &folder)
{
    return QStringLiteral("Corvane ya se está ejecutando con la carpeta del programa ") +
           folder.dir() + QStringLiteral(".");
}

int refuse(const QString &text, int status, bool windows)
{
    QTextStream(stderr) << text << '\n';
    if (windows)
        QMessageBox::critical(nullptr, QStringLiteral("Corvane"), text);
    return status;
}

int runWindows(int argc, char *argv[], const CommandLine &command)
{
    prepareBrowser();
    QApplication app(argc, argv);
    installSpanish(app);
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/corvane.svg")));
    const ProgramFolder folder = folderOf(command);
    if (!writable(folder))
        return refuse(cannotWrite(folder), CannotWrite, true);
    InstanceLock lock(folder);
    if (!lock.tryLock()) {
        // A program already running here takes the addresses and comes to the front.
        if (!command.urls.isEmpty() && InstanceChannel::handOver(folder, command.urls))
            return 0;
        return refuse(alreadyRunning(folder), AlreadyRunning, true);
    }
    QtDesktop desktop(folder);
    Program program(folder, command.urls, desktop);
    QObject::connect(&program, &Program::mainWindowReady, &desktop, [&desktop](MainWindow *main) {
        desktop.setMainWindow(main);
        desktop.setGetunload([main] { return main->getunload(); });
    });
    QObject::connect(&program, &Program::unloadFolder, &desktop, &QtDesktop::unloadFolder);
    InstanceChannel channel(folder);
    QObject::connect(&channel, &InstanceChannel::received, &program, &Program::handOver);
    QObject::connect(&channel, &InstanceChannel::linksReceived, &program, &Program::fromBrowser);
    channel.listen();
    program.start();
    return QApplication::exec();
}

int runHeadless(int argc, char *argv[], const CommandLine &command)
{
    QCoreApplication app(argc, argv);
    const ProgramFolder folder = folderOf(command);
    if (!writable(folder))
        return refuse(cannotWrite(folder), CannotWrite, false);
    InstanceLock lock(folder);
    if (!lock.tryLock())
        return refuse(alreadyRunning(folder), AlreadyRunning, false);
    Headless headless(folder, command.urls);
    return headless.exec();
}

// What the browsers use: the extension's host, and the manifests that name it.
int runForBrowsers(int argc, char *argv[], const CommandLine &command)
{
    QCoreApplication app(argc, argv);
    const QString program = QCoreApplication::applicationFilePath();
    if (command.nativeHost)
        return NativeHost(folderOf(command), program).serve(STDIN_FILENO, STDOUT_FILENO);
    QStringList written;
    const QString error = BrowserRegistration::registerBrowsers(program, command.home, written);
    for (const QString &path : std::as_const(written))
        QTextStream(stdout) << "Escrito: " << path << '\n';
    if (!error.isEmpty())
        return refuse(error, CannotWrite, false);
    return 0;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication::setApplicationName(QStringLiteral("corvane"));
    QCoreApplication::setApplicationVersion(QStringLiteral(CORVANE_VERSION));
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    const CommandLine command = parseCommandLine(arguments);
    if (!command.error.isEmpty()) {
        QTextStream(stderr) << command.error << "\n\n" << QString::fromUtf8(Usage);
        return UsageError;
    }
    if (command.help) {
        QTextStream(stdout) << QString::fromUtf8(Usage);
        return 0;
    }
    if (command.version) {
        QTextStream(stdout) << "Corvane " << CORVANE_VERSION << '\n';
        return 0;
    }
    if (command.nativeHost || command.registerBrowsers)
        return runForBrowsers(argc, argv, command);
    return command.headless ? runHeadless(argc, argv, command) : runWindows(argc, argv, command);
}
