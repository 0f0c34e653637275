// How much the rows of the windows cost a download: the engine fetches one file from a local
// nginx, once with the plain rows of the headless mode and once with `download` rows in a shown
// active window (also with the row selected, so the detail panel follows it). Prints MB/s and CPU
// seconds per GiB for every run, and the medians of the rounds' ratios to the plain rows.
// Usage: corvane_rowbench [ROUNDS [MIB]]. Not part of the test run; see README.md.
#include "activewindow.h"
#include "detailwindow.h"
#include "fakedesktop.h"
#include "localservers.h"
#include "recordinghistory.h"
#include "settings.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTextStream>
#include <algorithm>
#include <map>
#include <sys/resource.h>

namespace {

enum class Rows
{
    Plain,
    Window,
    Selected
};

const std::map<Rows, QString> RowNames = {
    {Rows::Plain, QStringLiteral("plain rows")},
    {Rows::Window, QStringLiteral("window rows")},
    {Rows::Selected, QStringLiteral("window rows, selected")}};

double cpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

bool makeFile(const QString &path, qint64 size)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    QByteArray block(1 << 20, Qt::Uninitialized);
    QRandomGenerator generator(1);
    for (qint64 written = 0; written < size; written += block.size()) {
        generator.fillRange(reinterpret_cast<quint32 *>(block.data()), block.size() / 4);
        file.write(block);
    }
    return true;
}

struct Run
{
    double mbPerSecond = 0;
    double cpuPerGiB = 0;
    bool ok = false;
};

Run fetch(Rows rows, const QString &url, const QString &target, qint64 size)
{
    QTemporaryDir home;
    Settings settings;
    FakeDesktop desktop;
    RecordingHistory history;
    const ProgramFolder folder(home.path());
    const auto plain = [](int) { return std::make_unique<RowState>(); };
    ActiveList active(settings, desktop, history, folder, plain);
    std::unique_ptr<DetailWindow> detail;
    std::unique_ptr<ActiveWindow> window;
    if (rows != Rows::Plain) {
        detail = std::make_unique<DetailWindow>();
        window = std::make_unique<ActiveWindow>(active, *detail);
        window->resize(800, 500);
        window->show();
    }
    active.startTimers();
    QEventLoop loop;
    QObject::connect(&active, &ActiveList::downloadFinished, &loop, &QEventLoop::quit);
    QObject::connect(&active, &ActiveList::downloadFailed, &loop, &QEventLoop::quit);
    QCoreApplication::processEvents();

    QElapsedTimer clock;
    const double cpu = cpuSeconds();
    clock.start();
    active.addnew(url, target, 0, 0, false, 0, true, QString(), QString(), false);
    if (rows == Rows::Selected)
        active.setSeleccionado(1);
    loop.exec();
    const double seconds = clock.nsecsElapsed() / 1e9;
    Run run;
    run.ok = QFileInfo(target).size() == size;
    run.mbPerSecond = size / seconds / 1e6;
    run.cpuPerGiB = (cpuSeconds() - cpu) / (double(size) / (1 << 30));
    QFile::remove(target);
    return run;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QTextStream out(stdout);
    const QStringList arguments = QCoreApplication::arguments();
    const int rounds = arguments.size() > 1 ? arguments[1].toInt() : 5;
    const qint64 size = (arguments.size() > 2 ? arguments[2].toLongLong() : 1024) << 20;

    QTemporaryDir served;
    QTemporaryDir downloads;
    if (!makeFile(served.filePath(QStringLiteral("big.bin")), size)) {
        out << "cannot write the source file\n";
        return 1;
    }
    NginxServer server(served.path());
    if (!server.start()) {
        out << server.error() << '\n';
        return 1;
    }
    const QString url = server.url(QStringLiteral("big.bin"));
    const QString target = downloads.filePath(QStringLiteral("big.bin"));
    out << "platform " << QGuiApplication::platformName() << ", " << (size >> 20) << " MiB, "
        << rounds << " rounds (one more first, not counted)\n";

    // Per round, each kind of row against the plain rows of the same round: runs seconds apart
    // see the same load of a shared machine.
    std::map<Rows, std::vector<double>> speeds;
    std::map<Rows, std::vector<double>> cpu;
    for (int round = 0; round <= rounds; ++round) {
        Run plain;
        for (Rows rows : {Rows::Plain, Rows::Window, Rows::Selected}) {
            const Run run = fetch(rows, url, target, size);
            if (rows == Rows::Plain)
                plain = run;
            out << (round ? "" : "warm-up ") << RowNames.at(rows) << ": "
                << QString::number(run.mbPerSecond, 'f', 0) << " MB/s, "
                << QString::number(run.cpuPerGiB, 'f', 2) << " CPU s/GiB"
                << (run.ok ? "" : " FAILED") << Qt::endl;
            if (round && run.ok && plain.ok) {
                speeds[rows].push_back(run.mbPerSecond / plain.mbPerSecond);
                cpu[rows].push_back(run.cpuPerGiB / plain.cpuPerGiB);
            }
        }
    }
    out << "\nmedians of the rounds, against plain rows:\n";
    for (const auto &[rows, name] : RowNames)
        out << "  " << name << ": " << QString::number(median(speeds[rows]), 'f', 2)
            << " x the speed, " << QString::number(median(cpu[rows]), 'f', 2) << " x the CPU\n";
    return 0;
}
