// A corvane built without windows runs without a screen whatever it is asked.
#include "frontends.h"

#include <QTextStream>

int runWindows(int argc, char *argv[], const CommandLine &command)
{
    QTextStream(stderr) << "Esta copia de Corvane no tiene ventanas: funciona sin pantalla.\n";
    return runHeadless(argc, argv, command);
}
