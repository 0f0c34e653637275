// Times the history log with a full 5000 Kbyte log: appending a line (each one trims the first
// line), with and without its window, and loading, showing and saving the whole log.
//   cmake --build build --target bench_history && build/bin/bench_history [appends]
#include "fakedesktop.h"
#include "historylog.h"
#include "historywindow.h"
#include "settings.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTextStream>
#include <algorithm>
#include <vector>

namespace {

QTextStream out(stdout);

// The lines a busy download session writes, in their colours.
void appendSessionLine(HistoryLog &log, int i)
{
    const QString name = QStringLiteral("archivo-%1.zip").arg(i);
    if (i % 2 == 0) {
        log.append(QStringLiteral("\r\nDescargando http://servidor.ejemplo/ruta/") + name +
                       QStringLiteral(" a /home/ana/descargas/") + name,
                   HistoryColour::Black);
    } else {
        log.append(QStringLiteral("\r\nLa descarga de http://servidor.ejemplo/ruta/") + name +
                       QStringLiteral(" a /home/ana/descargas/") + name +
                       QStringLiteral(" ha finalizado tras 12 segundos."),
                   HistoryColour::Blue);
    }
}

// Appends until the first line has gone: the log is full from then on.
int fill(HistoryLog &log)
{
    bool full = false;
    QObject::connect(&log, &HistoryLog::linesRemoved, &log, [&full] { full = true; });
    int i = 0;
    while (!full)
        appendSessionLine(log, i++);
    return i;
}

void timeAppends(const char *what, HistoryLog &log, int first, int count)
{
    std::vector<qint64> nanoseconds;
    nanoseconds.reserve(size_t(count));
    QElapsedTimer timer;
    for (int i = first; i < first + count; ++i) {
        timer.start();
        appendSessionLine(log, i);
        nanoseconds.push_back(timer.nsecsElapsed());
    }
    std::sort(nanoseconds.begin(), nanoseconds.end());
    qint64 total = 0;
    for (const qint64 ns : nanoseconds)
        total += ns;
    const auto micro = [](qint64 ns) { return QString::number(double(ns) / 1000.0, 'f', 1); };
    out << "| " << what << " | " << count << " | " << micro(total / count) << " | "
        << micro(nanoseconds[nanoseconds.size() / 2]) << " | "
        << micro(nanoseconds[nanoseconds.size() * 99 / 100]) << " | " << micro(nanoseconds.back())
        << " |" << Qt::endl;
}

qint64 milliseconds(const std::function<void()> &work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return timer.elapsed();
}

} // namespace

int main(int argc, char *argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const int appends = argc > 1 ? QByteArray(argv[1]).toInt() : 20000;
    QTemporaryDir dir;
    Settings settings;
    settings.histsize = 5000;
    settings.histrut = dir.filePath(QStringLiteral("historial.rtf"));
    FakeDesktop desktop;

    out << "| appending one line to a full log | lines | mean µs | median µs | 99th µs | "
           "max µs |\n|---|---|---|---|---|---|\n";
    HistoryLog log(settings, desktop);
    const int filled = fill(log);
    timeAppends("log alone", log, filled, appends);
    qint64 shown = 0;
    {
        HistoryWindow window(log);
        window.show();
        timeAppends("log and its window, shown", log, filled + appends, appends);
    }
    out << '\n';

    // What every append would cost if the length were measured by writing the RTF.
    const qint64 encoded = milliseconds([&log] { Rtf::write(log.document()); });
    const qint64 saved = milliseconds([&log] { log.close(); });
    HistoryLog next(settings, desktop);
    const qint64 loaded = milliseconds([&next] { next.open(); });
    shown = milliseconds([&next] {
        HistoryWindow window(next);
        window.show();
        QApplication::processEvents();
    });
    out << "| whole log (" << QFileInfo(settings.histrut).size() / 1024 << " Kbytes, "
        << next.text().count(QStringLiteral("\r\n")) + 1 << " lines) | ms |\n|---|---|\n"
        << "| encoding the whole log as RTF in memory | " << encoded << " |\n"
        << "| closing: closing line, RTF written | " << saved << " |\n"
        << "| opening: file read, start line | " << loaded << " |\n"
        << "| window created and shown | " << shown << " |\n";
    out.flush();
    return desktop.calls.isEmpty() ? 0 : 1;
}
