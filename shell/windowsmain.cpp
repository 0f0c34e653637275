// The program with windows.
#include "browserstartup.h"
#include "frontends.h"
#include "mainwindow.h"
#include "program.h"
#include "qtdesktop.h"
#include "singleinstance.h"

#include <QApplication>
#include <QLibraryInfo>
#include <QMessageBox>
#include <QTextStream>
#include <QTranslator>

namespace {

// Qt's own dialogs and buttons ("Sí", "Cancelar", the file dialogs) speak Spanish too.
void installSpanish(QApplication &app)
{
    auto *translator = new QTranslator(&app);
    if (translator->load(QStringLiteral("qt_es"),
                         QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QApplication::installTranslator(translator);
}

int refuse(const QString &text, int status)
{
    QTextStream(stderr) << text << '\n';
    QMessageBox::critical(nullptr, QStringLiteral("Corvane"), text);
    return status;
}

} // namespace

int runWindows(int argc, char *argv[], const CommandLine &command)
{
    prepareBrowser();
    QApplication app(argc, argv);
    installSpanish(app);
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/corvane.svg")));
    const ProgramFolder folder = Startup::folderOf(command);
    if (const QString reason = Startup::unwritable(folder); !reason.isEmpty())
        return refuse(reason, Startup::CannotWrite);
    InstanceLock lock(folder);
    if (!lock.tryLock()) {
        // A program already running here takes the addresses and comes to the front.
        if (!command.urls.isEmpty() && InstanceChannel::handOver(folder, command.urls))
            return 0;
        return refuse(Startup::alreadyRunning(folder), Startup::AlreadyRunning);
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
