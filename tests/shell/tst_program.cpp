#include "corvaneprocess.h"
#include "scriptedhttpserver.h"
#include "settingsfixture.h"
#include "singleinstance.h"
#include "xserver.h"

#include <QLocalSocket>
#include <QRegularExpression>
#include <QSysInfo>
#include <QTest>

namespace {

const QByteArray Content = QByteArray("Corvane ").repeated(300000);

} // namespace

class TestProgram : public QObject
{
    Q_OBJECT

    XServer m_x;

private Q_SLOTS:
    void initTestCase() { QVERIFY2(m_x.start(), qPrintable(m_x.error())); }

    void downloadsTakesOverAndLeaves()
    {
        SettingsFixture home;
        QVERIFY(home.saveQuiet()); // so that the start asks nothing
        ScriptedHttpServer server([](const QByteArray &request, int) {
            return ScriptedHttpServer::file(Content, request, true);
        });
        // The lock left by a program that was killed is taken over.
        home.write("corvane.lock",
                   "999999\ncorvane\n" + QSysInfo::machineHostName().toUtf8() + "\n");
        CorvaneProcess first({"--home", home.folder(), server.url("f.bin")}, m_x.environment(),
                             QProcess::ForwardedErrorChannel);
        QTRY_COMPARE_WITH_TIMEOUT(home.read("download/f.bin").size(), Content.size(), 20000);

        // Garbage and a huge message on the hand-over channel are ignored.
        QLocalSocket bad[2];
        const QByteArray messages[2]{"\x01\x02garbage\n\n",
                                     "CORVANE 1\n" + QByteArray(3 << 20, 'x') + "\n\n"};
        for (int i = 0; i < 2; ++i) {
            bad[i].connectToServer(InstanceChannel::nameFor(ProgramFolder(home.dir.path())));
            QVERIFY(bad[i].waitForConnected(2000));
            bad[i].write(messages[i]);
            bad[i].flush();
        }

        // A second start on the same folder hands its addresses over and ends at once.
        CorvaneProcess second(
            {"--home", home.folder(), server.url("a.bin"), "zelq:" + server.url("b.bin")},
            m_x.environment(), QProcess::ForwardedErrorChannel);
        QCOMPARE(second.waitForExit(10000), 0);
        QTRY_COMPARE_WITH_TIMEOUT(home.read("download/b.bin").size(), Content.size(), 20000);
        QTRY_COMPARE_WITH_TIMEOUT(home.read("download/a.bin").size(), Content.size(), 20000);

        // Headless, it refuses: the folder is in use.
        CorvaneProcess third({"--headless", "--home", home.folder()});
        QCOMPARE(third.waitForExit(10000), 3);
        QVERIFY(QString::fromUtf8(third.readAllStandardError()).contains("ya se está ejecutando"));

        // What a person does to leave: the Archivo menu, then Salir, with the keyboard. The keys go
        // to whatever has the focus; the window is gone by the time they are done.
        QCOMPARE(m_x.run("xdotool", {"search", "--sync", "--onlyvisible", "--name", "^Corvane$",
                                     "windowfocus"}),
                 0);
        m_x.run("xdotool", {"key", "--delay", "300", "alt+a", "s"});
        QCOMPARE(first.waitForExit(10000), 0);
        for (const char *name : {"f.bin", "a.bin", "b.bin"})
            QCOMPARE(home.read(QString("download/") + name), Content);
        // Addresses given on the command line or handed over do not go into the quick-add list.
        QCOMPARE(home.read("quick.lst"), QByteArray());
        QCOMPARE(server.requests().size(), 3);
    }

    void keyboardAndScreenReader()
    {
        // An empty program folder, as a new user has; a server that sends a little and then
        // nothing, so the download is still there at the end. A click into the quick-add box, the
        // address typed, Enter; the accessibility tree read as a screen reader does.
        SettingsFixture home;
        ScriptedHttpServer server([](const QByteArray &request, int) {
            HttpReply reply = ScriptedHttpServer::file(Content, request, true);
            reply.dropAfter = 1000;
            reply.stall = true;
            return reply;
        });
        const QString url = server.url("x.wav");
        QProcess reader;
        reader.setProcessEnvironment(m_x.environment());
        reader.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        reader.start("dbus-run-session",
                     {"--", "/usr/bin/python3",
                      qEnvironmentVariable("CORVANE_SOURCE_DIR") + "/tests/shell/screenreader.py",
                      CorvaneProcess::built(), home.folder(), url});
        QVERIFY(reader.waitForFinished(90000));
        QCOMPARE(reader.exitCode(), 0);
        const QStringList said = QString::fromUtf8(reader.readAllStandardOutput()).split('\n');

        // The row is there and kept in the list; each panel is read by its text, with its tooltip
        // after it. A first start asks nothing (a question would have taken the keys) and writes
        // the settings.
        QVERIFY2(said.contains("row|" + url), qPrintable(said.join('\n')));
        QVERIFY(QFile::exists(home.path("corvane.ini")));
        QVERIFY(home.read("activas.dwn").startsWith(QByteArray(url.toUtf8() + "\r\n")));
        const QStringList panels = said.filter(QRegularExpression("^panel\\|"));
        const QRegularExpression expected(
            "^panel\\|\\d+/\\d+\\|Número de descargas activas/Descargas totales\n"
            "panel\\|(0 Kb/s|Vel\\. Total: \\d+Kb/seg\\|\\|Vel\\. Media: .* Kb/seg)\\|Velocidad "
            "media\n"
            "panel\\|.*\\|Mensajes$");
        QVERIFY2(expected.match(panels.join('\n')).hasMatch(), qPrintable(panels.join('\n')));
    }

    void browserLinks()
    {
        // A page whose links are clicked as soon as it is shown, the browser window shown: the
        // zelq: link's file is downloaded, the _blank link opens nothing.
        SettingsFixture home;
        QVERIFY(home.saveQuiet());
        home.write("view.win", QByteArray::fromHex("ffff0000ffff00000000ffffffff"));
        ScriptedHttpServer server([&](const QByteArray &request, int) {
            if (!request.startsWith("GET /pagina.html"))
                return ScriptedHttpServer::file(Content, request, true);
            const QByteArray links = "<a id=z href='zelq:" + server.url("z.bin").toUtf8() +
                                     "'>z</a> <a id=b target=_blank href='" +
                                     server.url("nueva.html").toUtf8() + "'>b</a>";
            return ScriptedHttpServer::status(
                "HTTP/1.1 200 OK", "Content-Type: text/html\r\nConnection: close\r\n",
                "<html><body>" + links +
                    "<script>for (const id of ['b', 'z']) document.getElementById(id).click();"
                    "</script></body></html>");
        });
        QProcessEnvironment environment = m_x.environment();
        environment.insert("CORVANE_HOME_PAGE", server.url("pagina.html"));
        CorvaneProcess corvane({"--home", home.folder()}, environment,
                               QProcess::ForwardedErrorChannel);
        QTRY_COMPARE_WITH_TIMEOUT(home.read("download/z.bin"), Content, 30000);
        QCOMPARE(server.requests().size(), 2);
        // The notice of the added link is up; the program ends all the same, as on logging out.
        corvane.terminate();
        QCOMPARE(corvane.waitForExit(10000), 0);
    }
};

QTEST_GUILESS_MAIN(TestProgram)
#include "tst_program.moc"
