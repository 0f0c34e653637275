#include "corvaneprocess.h"
#include "mainwindow.h"
#include "program.h"
#include "scriptedhttpserver.h"
#include "settingsfixture.h"
#include "singleinstance.h"
#include "xserver.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLocalSocket>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QSysInfo>
#include <QTest>

namespace {

const QByteArray Content = QByteArray("Corvane ").repeated(300000);

// Copies `text` as another program would: xclip owns the clipboard until the next copy, and
// ends with the X server.
bool copy(const XServer &x, const QString &text)
{
    QSignalSpy changed(QGuiApplication::clipboard(), &QClipboard::dataChanged);
    QProcess xclip;
    xclip.setProcessEnvironment(x.environment());
    xclip.setStandardOutputFile(QProcess::nullDevice());
    xclip.setStandardErrorFile(QProcess::nullDevice());
    xclip.start("xclip", {"-selection", "clipboard"});
    xclip.write(text.toUtf8());
    xclip.closeWriteChannel();
    return xclip.waitForFinished(5000) && (changed.count() > 0 || changed.wait(5000));
}

} // namespace

class TestProgram : public QObject
{
    Q_OBJECT

    const XServer &m_x;

public:
    explicit TestProgram(const XServer &x) : m_x(x) {}

private Q_SLOTS:
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

    // The program in this process, so that the clipboard is the real one of the X server.
    void clipboardOfferedOnce()
    {
        // The link grabber wants PDF files too; the watch is off, as at first. Then the watch is
        // switched on in the settings window, and one copy follows another: what is offered is in
        // the quick-add box and said in the messages' panel, nothing asked.
        SettingsFixture home;
        QVERIFY(home.saveQuiet());
        home.write("listado.lst", "exe\r\n.pdf\r\n");
        Program program(ProgramFolder(home.dir.path()), {}, home.desktop);
        program.start();
        QTRY_VERIFY(program.mainWindow() && program.mainWindow()->isVisible());
        MainWindow *main = program.mainWindow();
        QComboBox *quickadd = main->quickadd();
        const auto *mensajes = main->findChild<QLabel *>("mensajes");
        const QString first = "http://127.0.0.1:9/a.zip";
        QVERIFY(copy(m_x, first));
        QCOMPARE(quickadd->currentText(), QString());

        auto *cfg = main->findChild<QDialog *>("cfg");
        cfg->findChild<QCheckBox *>("portapapeles")->click();
        cfg->accept();
        // Copied, and offered (empty: nothing).
        const QList<std::pair<QString, QString>> copies{
            {first, first},
            {"  https://127.0.0.1:9/dir/Setup.EXE \n", "https://127.0.0.1:9/dir/Setup.EXE"},
            {first, ""},
            {"http://127.0.0.1:9/pagina.html", ""},
            {"http://127.0.0.1:9/c.zip http://127.0.0.1:9/d.zip", ""},
            {"Bájese http://127.0.0.1:9/g.zip", ""},
        };
        for (const auto &[copied, offered] : copies) {
            quickadd->setEditText(QString());
            QVERIFY2(copy(m_x, copied), qPrintable(copied));
            QCOMPARE(quickadd->currentText(), offered);
            if (!offered.isEmpty())
                QVERIFY2(mensajes->text().contains(offered), qPrintable(mensajes->text()));
        }
        QCOMPARE(home.desktop.calls, QStringList());
        QVERIFY(home.read("preferencias.ini").contains("portapapeles=true"));
        main->close();
    }
};

// The tests' own X server, also this process's display.
int main(int argc, char *argv[])
{
    XServer x;
    if (!x.start())
        qFatal("%s", qPrintable(x.error()));
    qputenv("DISPLAY", x.display().toLatin1());
    qputenv("QT_QPA_PLATFORM", "xcb");
    QApplication app(argc, argv);
    TestProgram test(x);
    return QTest::qExec(&test, argc, argv);
}

#include "tst_program.moc"
