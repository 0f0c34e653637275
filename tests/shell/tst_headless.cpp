#include "scriptedhttpserver.h"
#include "settingsfixture.h"

#include <QFile>
#include <QProcess>
#include <QTest>
#include <csignal>

namespace {

const QByteArray Content = QByteArray("0123456789abcdef").repeated(20000);

// The program run headless over the fixture's folder, as a person would from a script.
struct Run
{
    QProcess process;
    QString out() { return QString::fromUtf8(process.readAllStandardOutput()); }
    QString err() { return QString::fromUtf8(process.readAllStandardError()); }
};

void start(Run &run, const QString &home, const QStringList &urls)
{
    run.process.start(qEnvironmentVariable("CORVANE_BIN_DIR") + "/corvane",
                      QStringList{"--headless", "--home", home} + urls);
    QVERIFY(run.process.waitForStarted());
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestHeadless : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void finishesWithoutSettingsFile();
    void failureAndRefusal();
    void queueLongerThanTheLimit();
    void stopsOnTermAndResumes();
    void usage();
};

void TestHeadless::finishesWithoutSettingsFile()
{
    SettingsFixture f;
    ScriptedHttpServer server([](const QByteArray &request, int) {
        return ScriptedHttpServer::file(Content, request, true);
    });
    Run run;
    start(run, f.folder(), {server.url("a/f.bin")});
    QTRY_VERIFY_WITH_TIMEOUT(run.process.state() == QProcess::NotRunning, 20000);
    QCOMPARE(run.process.exitCode(), 0);
    QCOMPARE(readFile(f.dir.filePath("download/f.bin")), Content);
    const QString err = run.err();
    QVERIFY2(err.startsWith("No se encuentra el archivo de configuración"), qPrintable(err));
    QVERIFY(err.contains("Finalizada la descarga de " + server.url("a/f.bin") + "\n"));
    const QString out = run.out();
    QVERIFY2(out.contains("Iniciada: " + server.url("a/f.bin")), qPrintable(out));
    QVERIFY(out.contains("Terminada: " + f.dir.filePath("download/f.bin")));
    // Both lists are written on the way out, and nothing is left to resume.
    QCOMPARE(readFile(f.dir.filePath("activas.dwn")), QByteArray());
    QVERIFY(QFile::exists(f.dir.filePath("inactivas.dwn")));
}

void TestHeadless::failureAndRefusal()
{
    SettingsFixture f;
    ScriptedHttpServer server(
        [](const QByteArray &, int) { return HttpReply::of("HTTP/1.1 404 No\r\n\r\n"); });
    Run run;
    start(run, f.folder(), {server.url("nada.zip"), "HTTPS://x/y"});
    QTRY_VERIFY_WITH_TIMEOUT(run.process.state() == QProcess::NotRunning, 20000);
    QCOMPARE(run.process.exitCode(), 1);
    const QString err = run.err();
    QVERIFY2(err.contains("El archivo " + server.url("nada.zip") + " no existe.\n"),
             qPrintable(err));
    QVERIFY(err.contains("Escriba una dirección correcta (debe empezar por http:// o ftp://)\n"));
    QVERIFY(run.out().contains("Fallida: " + server.url("nada.zip")));
}

void TestHeadless::queueLongerThanTheLimit()
{
    SettingsFixture f;
    // Two at a time: the rest wait in the queue and follow as places free.
    QVERIFY(f.model.setSpin(&Settings::maxdescval, 3));
    QVERIFY(f.model.save());
    ScriptedHttpServer server([](const QByteArray &request, int) {
        return ScriptedHttpServer::file(Content, request, true);
    });
    QStringList urls;
    for (int i = 0; i < 6; ++i)
        urls << server.url(QStringLiteral("f%1.bin").arg(i));
    Run run;
    start(run, f.folder(), urls);
    QTRY_VERIFY_WITH_TIMEOUT(run.process.state() == QProcess::NotRunning, 30000);
    QCOMPARE(run.process.exitCode(), 0);
    for (int i = 0; i < 6; ++i)
        QCOMPARE(readFile(f.dir.filePath(QStringLiteral("download/f%1.bin").arg(i))), Content);
    QCOMPARE(server.requests().size(), 6);
}

void TestHeadless::stopsOnTermAndResumes()
{
    SettingsFixture f;
    bool stall = true;
    ScriptedHttpServer server([&](const QByteArray &request, int) {
        HttpReply reply = ScriptedHttpServer::file(Content, request, true);
        if (stall) {
            reply.dropAfter = reply.bytes.indexOf("\r\n\r\n") + 4 + 100000;
            reply.stall = true;
        }
        return reply;
    });
    const QString path = f.dir.filePath("download/f.bin");
    Run first;
    start(first, f.folder(), {server.url("f.bin")});
    QTRY_COMPARE_WITH_TIMEOUT(QFileInfo(path).size(), qint64(100000), 20000);
    ::kill(pid_t(first.process.processId()), SIGTERM);
    QTRY_VERIFY_WITH_TIMEOUT(first.process.state() == QProcess::NotRunning, 10000);
    QCOMPARE(first.process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(first.process.exitCode(), 1);
    QCOMPARE(readFile(path), Content.left(100000));
    QVERIFY(readFile(f.dir.filePath("activas.dwn")).startsWith(server.url("f.bin").toUtf8()));

    // The next run, with no address given, picks the saved download up where it stopped.
    stall = false;
    Run second;
    start(second, f.folder(), {});
    QTRY_VERIFY_WITH_TIMEOUT(second.process.state() == QProcess::NotRunning, 20000);
    QCOMPARE(second.process.exitCode(), 0);
    QCOMPARE(ScriptedHttpServer::rangeStart(server.requests().value(1)), 100000);
    QCOMPARE(readFile(path), Content);
}

void TestHeadless::usage()
{
    QProcess process;
    const QString program = qEnvironmentVariable("CORVANE_BIN_DIR") + "/corvane";
    process.start(program, {"--headless", "--desconocida"});
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 2);
    process.start(program, {"--help"});
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 0);
    QVERIFY(process.readAllStandardOutput().startsWith("Uso: corvane"));
}

QTEST_GUILESS_MAIN(TestHeadless)
#include "tst_headless.moc"
