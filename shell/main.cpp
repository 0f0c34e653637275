#include "commandline.h"
#include "programfolder.h"
#include "qtdesktop.h"

#include <QApplication>
#include <QMainWindow>
#include <QTextStream>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Corvane"));
    QApplication::setApplicationVersion(QStringLiteral(CORVANE_VERSION));

    const CommandLine command = parseCommandLine(QCoreApplication::arguments());
    if (!command.error.isEmpty()) {
        QTextStream(stderr) << command.error << '\n';
        return 2;
    }
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
