// The program run headless with its real timers, against scripted and real servers. Timers that
// fire in the same instant, and a restart after a kill, can only be seen this way: these tests
// wait real seconds (CTest label "slow"), each well under 20.
#include "corvaneprocess.h"
#include "enginefixture.h"
#include "localservers.h"
#include "partplan.h"
#include "scriptedhttpserver.h"
#include "segments.h"
#include "settingsfixture.h"

#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>
#include <csignal>
#include <sys/resource.h>

namespace {

const QByteArray Content = randomBytes(200000);

// A program folder whose settings drop a connection after 5 silent seconds and retry 5 later.
struct Home : SettingsFixture
{
    Home()
    {
        model.setSpin(&Settings::waitv, 5);
        model.setSpin(&Settings::segsv, 5);
        model.save();
    }

    QString file(const QString &name) const { return path("download/" + name); }
    QStringList headless(const QStringList &more) const
    {
        return QStringList{"--headless", "--home", dir.path()} + more;
    }
    // Runs the program until it ends, the test's servers answering meanwhile; its exit status,
    // or -1 when it did not end in time.
    int run(const QStringList &urls) const
    {
        return CorvaneProcess(headless(urls)).waitForExit(19000);
    }
};

} // namespace

class TestRealTimers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void retryAnswersAtOnce() { stalledThenRetried(0); }
    void retryAnswersAfter4s() { stalledThenRetried(4000); }

    void trickleNeverDropped()
    {
        Home home;
        ScriptedHttpServer server([](const QByteArray &request, int) {
            const QByteArray whole = ScriptedHttpServer::file(Content, request, true).bytes;
            const qsizetype piece = whole.size() / 5 + 1;
            HttpReply reply{.gapMs = 2000};
            for (qsizetype at = 0; at < whole.size(); at += piece)
                reply.chunks << whole.mid(at, piece);
            return reply;
        });
        QCOMPARE(home.run({server.url("f.bin")}), 0);
        QCOMPARE(server.connections(), 1);
        QCOMPARE(home.read("download/f.bin"), Content);
    }

    // --limit-rate holds the whole download to its rate, and a connection waiting for the limit
    // sleeps instead of spinning.
    void speedLimit()
    {
        const ServedFolder served("grande.bin", 3 * 1024 * 1024);
        NginxServer nginx(served.root.path());
        QVERIFY2(nginx.start(), qPrintable(nginx.error()));
        Home home;
        rusage before{};
        ::getrusage(RUSAGE_CHILDREN, &before);
        QElapsedTimer clock;
        clock.start();
        CorvaneProcess process(home.headless({"--limit-rate", "1024", nginx.url("grande.bin")}));
        QVERIFY(process.waitForFinished(19000));
        const qint64 elapsed = clock.elapsed();
        rusage after{};
        ::getrusage(RUSAGE_CHILDREN, &after);
        QCOMPARE(process.exitCode(), 0);
        QCOMPARE(home.read("download/grande.bin"), served.bytes);
        // 3 MiB at 1 MiB/s, less the quarter second the limit may hold at the start.
        QVERIFY2(elapsed >= 2700 && elapsed <= 4500, qPrintable(QString::number(elapsed)));
        const auto cpuMs = [](const rusage &usage) {
            return (usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1000 +
                   (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1000;
        };
        QVERIFY2(cpuMs(after) - cpuMs(before) < 1000,
                 qPrintable(QString::number(cpuMs(after) - cpuMs(before))));
    }

    void ftpAfterKill_data()
    {
        QTest::addColumn<QString>("server");
        QTest::addColumn<QString>("login"); // in the address of the second file
        QTest::newRow("vsftpd") << "vsftpd" << QString();
        QTest::newRow("proftpd") << "proftpd"
                                 << "ana:se%40c%3Areta@";
    }

    // Stock servers as people run them: a file in a folder, killed at about 40 % and fetched on
    // from where it stopped (the next run sends "REST" with the bytes on disk); a file at the root
    // with a UTF-8 name, with a login in its address where the server has users; a missing file,
    // which fails at once.
    void ftpAfterKill()
    {
        QFETCH(QString, server);
        QFETCH(QString, login);
        QTemporaryDir root;
        QDir(root.path()).mkdir("pub");
        const QByteArray big = randomBytes(2 * 1024 * 1024);
        const QByteArray songBytes = randomBytes(1000);
        QVERIFY(writeFile(root.filePath("pub/grande.bin"), big) &&
                writeFile(root.filePath("canción.mp3"), songBytes));
        constexpr int Rate = 512 * 1024;
        const std::unique_ptr<LocalServer> ftp(
            server == "vsftpd" ? static_cast<LocalServer *>(new VsftpdServer(root.path(), Rate))
                               : new ProftpdServer(root.path(), Rate));
        QVERIFY2(ftp->start(), qPrintable(ftp->error()));
        Home home;
        CorvaneProcess first(home.headless({ftp->url("pub/grande.bin")}));
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(home.file("grande.bin")).size() > big.size() * 2 / 5,
                                 10000);
        ::kill(pid_t(first.processId()), SIGKILL);
        QVERIFY(first.waitForFinished());
        const qint64 kept = QFileInfo(home.file("grande.bin")).size();
        // Added as quick add does: the list keeps no user name or password.
        const QList<QByteArray> saved = home.read("activas.dwn").split('\n');
        QCOMPARE(saved.mid(6, 2), (QList<QByteArray>{"\r", "\r"}));

        const QString song = ftp->url("canci%C3%B3n.mp3").insert(6, login);
        QCOMPARE(home.run({song, ftp->url("nada.bin")}), 1);
        QCOMPARE(home.read("download/grande.bin"), big);
        QVERIFY2(ftp->log().contains(QByteArray("REST " + QByteArray::number(kept))),
                 ftp->log().right(3000));
        QCOMPARE(home.read("download/canción.mp3"), songBytes);
        QCOMPARE(ftp->log().contains("USER ana"), !login.isEmpty());
        QVERIFY(!QFile::exists(home.file("nada.bin")));
    }

    void partsAfterKill();

private:
    void stalledThenRetried(int headDelayMs)
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
        QCOMPARE(home.run({server.url("f.bin")}), 0);
        // Dropped once after the silence, and the retry's own connection kept.
        QCOMPARE(server.connections(), 2);
        QCOMPARE(ScriptedHttpServer::rangeStart(server.requests().value(1)), 60000);
        QCOMPARE(home.read("download/f.bin"), Content);
    }
};

// A download in parts, killed on its way and started again: the file is whole, and the second run
// asks only for bytes that the saved parts say are missing.
void TestRealTimers::partsAfterKill()
{
    const ServedFolder served("partes.bin", 40 * 1024 * 1024);
    const QTemporaryDir logs;
    const QString log = logs.filePath("ranges.log");
    NginxServer nginx(served.root.path(), "limit_rate 2m; access_log " + log + " ranges;");
    QVERIFY2(nginx.start(), qPrintable(nginx.error()));
    Home home;
    CorvaneProcess first(home.headless({nginx.url("partes.bin")}));
    QTRY_VERIFY_WITH_TIMEOUT(home.read("activas.json").contains("partes"), 10000);
    QTest::qWait(Segments::KeepMs + ActiveList::SaveSoonMs + 500); // saved again with bytes
    ::kill(pid_t(first.processId()), SIGKILL);
    QVERIFY(first.waitForFinished());
    QTest::qWait(500); // nginx notes the requests that were cut
    const QJsonObject saved = QJsonDocument::fromJson(home.read("activas.json")).object();
    const QString text = saved.begin()->toObject().value("partes").toString();
    const PartPlan plan = PartPlan::fromText(text, served.bytes.size());
    QVERIFY2(!plan.isEmpty() && plan.fetched() > 0 && !plan.complete(), qPrintable(text));
    const qsizetype firstRun = readFile(log).count('\n');

    QCOMPARE(home.run({}), 0);
    QCOMPARE(home.read("download/partes.bin"), served.bytes);
    const QList<QByteArray> secondRun = readFile(log).split('\n').mid(firstRun);
    QVERIFY(secondRun.size() > 1);
    for (const QByteArray &range : secondRun) {
        if (range.isEmpty())
            continue;
        const qint64 start = range.mid(6, range.indexOf('-') - 6).toLongLong();
        QVERIFY2(range.startsWith("bytes=") && std::any_of(plan.parts().begin(), plan.parts().end(),
                                                           [start](const PartPlan::Part &part) {
                                                               return start >= part.next &&
                                                                      start < part.end;
                                                           }),
                 qPrintable(text + " asked again: " + range));
    }
}

QTEST_GUILESS_MAIN(TestRealTimers)
#include "tst_realtimers.moc"
