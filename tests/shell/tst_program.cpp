#include "scriptedhttpserver.h"
#include "xserver.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QByteArray Content = QByteArray("Corvane ").repeated(300000);

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// A program folder whose settings file exists, so the first start asks nothing.
struct Home
{
    QTemporaryDir dir;
    Home()
    {
        QFile ini(dir.filePath("corvane.ini"));
        if (ini.open(QIODevice::WriteOnly))
            ini.write(dir.filePath("download").toUtf8() +
                      "\r\n 1 \r\n 0 \r\n 0 \r\n\r\n5\r\n5\r\n 0 \r\n 0 \r\n 1 \r\n10\r\n10\r\n"
                      " 1 \r\nFalse\r\nTrue\r\nFalse\r\nTrue\r\nFalse\r\n 0 \r\n" +
                      dir.filePath("historial.rtf").toUtf8() + "\r\n 10 \r\n");
    }
    QString path(const QString &name) const { return dir.filePath(name); }
};

// The program with its windows, on the test's own X server.
struct Corvane
{
    QProcess process;
    Corvane(const XServer &x, const QString &home, const QStringList &urls)
    {
        process.setProcessEnvironment(x.environment());
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start(qEnvironmentVariable("CORVANE_BIN_DIR") + "/corvane",
                      QStringList{"--home", home} + urls);
    }
    ~Corvane()
    {
        if (process.state() != QProcess::NotRunning) {
            process.kill();
            process.waitForFinished(3000);
        }
    }
};

// What a person does to leave: the Archivo menu, then Salir, with the keyboard.
void chooseSalir(const XServer &x)
{
    QCOMPARE(x.run("xdotool",
                   {"search", "--sync", "--onlyvisible", "--name", "^Corvane$", "windowfocus"}),
             0);
    // Typed into whatever has the focus; the window is gone by the time the keys are done.
    x.run("xdotool", {"key", "--delay", "300", "alt+a", "s"});
}

} // namespace

class TestProgram : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void downloadsAndLeaves();
    void secondStartHandsOver();

private:
    XServer m_x;
};

void TestProgram::initTestCase()
{
    QVERIFY2(m_x.start(), qPrintable(m_x.error()));
}

void TestProgram::downloadsAndLeaves()
{
    // setup
    Home home;
    ScriptedHttpServer server([](const QByteArray &request, int) {
        return ScriptedHttpServer::file(Content, request, true);
    });
    // action
    Corvane corvane(m_x, home.dir.path(), {server.url("f.bin")});
    QTRY_COMPARE_WITH_TIMEOUT(readFile(home.path("download/f.bin")).size(), Content.size(), 20000);
    chooseSalir(m_x);
    QVERIFY(corvane.process.waitForFinished(10000));
    // verify
    QCOMPARE(corvane.process.exitCode(), 0);
    QCOMPARE(readFile(home.path("download/f.bin")), Content);
    // A first start shows both lists and both bars, and remembers that.
    QCOMPARE(readFile(home.path("view.win")), QByteArray::fromHex("00000000ffffffff0000ffffffff"));
    QVERIFY(QFile::exists(home.path("quick.lst")));
    QVERIFY(readFile(home.path("activas.dwn")).isEmpty());
}

void TestProgram::secondStartHandsOver()
{
    Home home;
    ScriptedHttpServer server([](const QByteArray &request, int) {
        return ScriptedHttpServer::file(Content, request, true);
    });
    Corvane first(m_x, home.dir.path(), {});
    QTRY_VERIFY_WITH_TIMEOUT(
        m_x.run("xdotool", {"search", "--onlyvisible", "--name", "^Corvane$"}) == 0, 30000);

    // A second start on the same folder hands its addresses over and ends at once.
    QProcess second;
    second.setProcessEnvironment(m_x.environment());
    second.start(qEnvironmentVariable("CORVANE_BIN_DIR") + "/corvane",
                 {"--home", home.dir.path(), server.url("a.bin"), "zelq:" + server.url("b.bin")});
    QVERIFY(second.waitForFinished(10000));
    QCOMPARE(second.exitCode(), 0);
    QTRY_COMPARE_WITH_TIMEOUT(readFile(home.path("download/b.bin")).size(), Content.size(), 20000);
    QTRY_COMPARE_WITH_TIMEOUT(readFile(home.path("download/a.bin")).size(), Content.size(), 20000);

    // Without addresses, or headless, it refuses: the folder is in use.
    QProcess third;
    third.start(qEnvironmentVariable("CORVANE_BIN_DIR") + "/corvane",
                {"--headless", "--home", home.dir.path()});
    QVERIFY(third.waitForFinished(10000));
    QCOMPARE(third.exitCode(), 3);
    QVERIFY(QString::fromUtf8(third.readAllStandardError()).contains("ya se está ejecutando"));

    chooseSalir(m_x);
    QVERIFY(first.process.waitForFinished(10000));
}

QTEST_GUILESS_MAIN(TestProgram)
#include "tst_program.moc"
