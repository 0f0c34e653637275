// What the browser window costs: made hidden at start-up, then shown for the first time (the web
// engine starts and opens the home page). Prints the time of each step and the memory of the
// program and of the web engine's helper processes.
//
//   browsercost [--stay SECONDS]    --stay keeps the window open afterwards, e.g. to look at it

#include "browserstartup.h"
#include "fakedesktop.h"
#include "homepage.h"
#include "notifier.h"
#include "settings.h"
#include "webwindow.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>
#include <QWebEnginePage>
#include <QWebEngineView>
#include <unistd.h>

namespace {

// Resident memory in MB of one process, from /proc.
double residentMb(const QString &pid)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(pid));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').value(0).toDouble() / 1024;
    }
    return 0;
}

// The memory of every process started by this one, however deep.
double helpersMb()
{
    QMap<QString, QString> parents;
    for (const QString &pid : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
        if (pid.toInt() > 0 && stat.open(QIODevice::ReadOnly)) {
            const QByteArray text = stat.readAll();
            parents[pid] = QString::fromLatin1(text.mid(text.lastIndexOf(')') + 2).split(' ')[1]);
        }
    }
    const QString self = QString::number(::getpid());
    double total = 0;
    for (auto it = parents.cbegin(); it != parents.cend(); ++it) {
        for (QString up = it.value(); parents.contains(up) || up == self; up = parents[up]) {
            if (up == self) {
                total += residentMb(it.key());
                break;
            }
        }
    }
    return total;
}

} // namespace

int main(int argc, char *argv[])
{
    prepareBrowser();
    QApplication app(argc, argv);
    const int stay = app.arguments().indexOf(QStringLiteral("--stay")) > 0
                         ? app.arguments().value(app.arguments().indexOf("--stay") + 1).toInt()
                         : 0;
    QTextStream out(stdout);
    const QString self = QString::number(::getpid());
    QTemporaryDir dir;
    Settings settings;
    FakeDesktop desktop;
    Notifier notifier(settings, desktop, ProgramFolder(dir.path()));
    {
        // Widgets, style and fonts are loaded by whichever window comes first; not counted.
        QWidget plain;
        QStatusBar bar(&plain);
        plain.ensurePolished();
        bar.ensurePolished();
    }
    const double atStart = residentMb(self);
    out << QStringLiteral("application started:  RSS %1 MB\n").arg(atStart, 0, 'f', 1);

    QElapsedTimer clock;
    clock.start();
    WebWindow window([](const QString &) { return true; }, notifier, desktop,
                     homePage(QCoreApplication::applicationDirPath()));
    const double made = clock.nsecsElapsed() / 1e6;
    const double hidden = residentMb(self);
    out << QStringLiteral("window made hidden:   %1 ms, RSS %2 MB (+%3)\n")
               .arg(made, 0, 'f', 2)
               .arg(hidden, 0, 'f', 1)
               .arg(hidden - atStart, 0, 'f', 1);

    clock.restart();
    window.show();
    const double shown = clock.nsecsElapsed() / 1e6;
    QSignalSpy loaded(window.explorador()->page(), &QWebEnginePage::loadFinished);
    loaded.wait(60000);
    const double ready = clock.nsecsElapsed() / 1e6;
    QEventLoop settle;
    QTimer::singleShot(1000, &settle, &QEventLoop::quit);
    settle.exec();
    const double open = residentMb(self);
    out << QStringLiteral("first show:           %1 ms to show, %2 ms to the home page loaded "
                          "(%3)\n")
               .arg(shown, 0, 'f', 1)
               .arg(ready, 0, 'f', 0)
               .arg(window.explorador()->url().toString());
    out << QStringLiteral("one second later:     RSS %1 MB (+%2), web engine helpers %3 MB\n")
               .arg(open, 0, 'f', 1)
               .arg(open - hidden, 0, 'f', 1)
               .arg(helpersMb(), 0, 'f', 1);
    out.flush();
    if (stay > 0) {
        QEventLoop look;
        QTimer::singleShot(stay * 1000, &look, &QEventLoop::quit);
        look.exec();
    }
    return 0;
}
