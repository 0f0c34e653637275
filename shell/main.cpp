#include "frontends.h"

#include <QCoreApplication>
#include <QTextStream>

namespace {

const char Usage[] =
    "Uso: corvane [--home CARPETA] [URL ...]\n"
    "       corvane [--home CARPETA] --headless [--limit-rate KB] [URL ...]\n"
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
    "  --limit-rate KB con --headless, entre todas las descargas no se leen más de KB\n"
    "                  Kb por segundo (0: sin límite); si no, rige la configuración\n"
    "  --register-browsers\n"
    "                  da a conocer a Chromium y Firefox el programa que recibe los\n"
    "                  enlaces de la extensión de Corvane (el paquete ya lo hace)\n"
    "  --native-host   lo que el navegador arranca para la extensión: mensajes por la\n"
    "                  entrada y la salida estándar\n"
    "  --help          muestra esta ayuda\n"
    "  --version       muestra la versión\n"
    "\n"
    "Las descargas se guardan en el directorio por defecto de la configuración. Mientras\n"
    "no se elija otro, es la carpeta de descargas del usuario (p. ej. ~/Descargas) si la\n"
    "carpeta del programa es ~/.local/share/corvane, y si no, download/ dentro de la\n"
    "carpeta del programa.\n";

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
        return Startup::UsageError;
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
