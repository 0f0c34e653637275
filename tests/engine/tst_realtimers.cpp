// The program run headless with its real timers, against scripted and real servers. Timers that
// fire in the same instant, and a restart after a kill, can only be seen this way: these tests
// wait real seconds (CTest label "slow"), each well under 20.
#include "enginefixture.h"
#include "localservers.h"
#include "scriptedhttpserver.h"
#include "settingsmodel.h"

#include <QDeadlineTimer>
#include <QProcess>
#include <QTest>
#include <csignal>

namespace {

const QByteArray Content = randomBytes(200000);

// A program folder whose settings drop a connection after 5 silent seconds and retry 5 later.
struct Home
{
    QTemporaryDir dir;
    FakeDesktop desktop;
    RecordingHistory history;

    Home()
    {
        SettingsModel settings(ProgramFolder(dir.path()), desktop, history);
        settings.setSpin(&Settings::waitv, 5);
        settings.setSpin(&Settings::segsv, 5);
        settings.save();
    }

    QString file(const QString &name) const
    {
        return dir.filePath(QStringLiteral("download/") + name);
    }
};

void startHeadless(const Home &home, const QStringList &urls, QProcess &process)
{
    process.start(qEnvironmentVariable("CORVANE_BIN_DIR") + "/corvane",
                  QStringList{"--headless", "--home", home.dir.path()} + urls);
}

// Runs the program over `home` until it ends, the test's servers answering meanwhile; its exit
// status, or -1 when it did not end in time.
int runHeadless(const Home &home, const QStringList &urls)
{
    QProcess process;
    startHeadless(home, urls, process);
    const QDeadlineTimer deadline(19000);
    while (process.state() != QProcess::NotRunning && !deadline.hasExpired())
        QTest::qWait(50);
    return process.state() == QProcess::NotRunning ? process.exitCode() : -1;
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestRealTimers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void retryAnswersAtOnce() { stalledThenRetried(0); }
    void retryAnswersAfter4s() { stalledThenRetried(4000); }
    void trickleNeverDropped();
    void ftpAfterKill();

private:
    void stalledThenRetried(int headDelayMs);
};

void TestRealTimers::stalledThenRetried(int headDelayMs)
{
    Home home;
    // The head and the first 60000 bytes, then silence with the connection open; the retry
    // gets the rest, after `headDelayMs`.
    ScriptedHttpServer server([&](const QByteArray &request, int index) {
        HttpReply reply = ScriptedHttpServer::file(Content, request, true);
        reply.dropAfter = index == 0 ? reply.bytes.indexOf("\r\n\r\n") + 4 + 60000 : -1;
        reply.stall = index == 0;
        reply.delayMs = index == 0 ? 0 : headDelayMs;
        return reply;
    });
    QCOMPARE(runHeadless(home, {server.url("f.bin")}), 0);
    // Dropped once after the silence, and the retry's own connection kept.
    QCOMPARE(server.connections(), 2);
    QCOMPARE(ScriptedHttpServer::rangeStart(server.requests().value(1)), 60000);
    QCOMPARE(readFile(home.file("f.bin")), Content);
}

void TestRealTimers::trickleNeverDropped()
{
    Home home;
    ScriptedHttpServer server([](const QByteArray &request, int) {
        const QByteArray whole = ScriptedHttpServer::file(Content, request, true).bytes;
        const qsizetype piece = whole.size() / 5 + 1;
        HttpReply reply;
        for (qsizetype at = 0; at < whole.size(); at += piece)
            reply.chunks << whole.mid(at, piece);
        reply.gapMs = 2000;
        return reply;
    });
    QCOMPARE(runHeadless(home, {server.url("f.bin")}), 0);
    QCOMPARE(server.connections(), 1);
    QCOMPARE(readFile(home.file("f.bin")), Content);
}

void TestRealTimers::ftpAfterKill()
{
    const ServedFolder served("grande.bin", 1024 * 1024);
    FtpdServer ftpd(served.root.path(), 256 * 1024);
    QVERIFY2(ftpd.start(), qPrintable(ftpd.error()));
    Home home;
    QProcess first;
    startHeadless(home, {ftpd.url("grande.bin")}, first);
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(home.file("grande.bin")).size() > 100000, 10000);
    ::kill(pid_t(first.processId()), SIGKILL);
    QVERIFY(first.waitForFinished());
    // Added as quick add does: the list keeps no user name or password.
    const QList<QByteArray> saved = readFile(home.dir.filePath("activas.dwn")).split('\n');
    QCOMPARE(saved.mid(6, 2), (QList<QByteArray>{"\r", "\r"}));

    QCOMPARE(runHeadless(home, {}), 0);
    QCOMPARE(readFile(home.file("grande.bin")), served.bytes);
}

QTEST_GUILESS_MAIN(TestRealTimers)
#include "tst_realtimers.moc"
