// The two lists, their files and commands, the commands on all downloads, the addresses a person
// types, and the timer ticks called by hand. Transfers over the network are in tst_transfers.
#include "alldownloads.h"
#include "enginefixture.h"
#include "quickadd.h"
#include "scriptedhttpserver.h"
#include "urls.h"

#include <QDir>
#include <QSignalSpy>
#include <QTest>

namespace {

const QString Url1 = QStringLiteral("http://127.0.0.1:9/uno.zip");
const QString Url2 = QStringLiteral("ftp://127.0.0.1:9/pub/dos.bin");

} // namespace

class TestLists : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Both files byte for byte, and read back by a fresh program.
    void listFiles()
    {
        EngineFixture f;
        // Written out in the order of the file's lines: address, path, total, bytes, time,
        // resumable, user, password, remembered, locked (the queue only); the extras go beside.
        f.active.addnew({.Data = Url1, .path = "/d/uno.zip", .tiempo = 7});
        const DownloadExtras referer{.referer = "http://p/", .cookie = "k=v"};
        f.active.addnew(
            {Url2, "/d/dos.bin", 3000, 1001, 55, true, "ana", "secreta", true, false, referer});
        // Credentials it was not asked to remember are not written; a complete download is not
        // written at all.
        f.active.addnew({.Data = Url2, .path = "/d/tres", .bytes = 5, .usernm = "u"});
        f.active.addnew({.Data = Url1, .path = "/d/cuatro", .total = 9, .bytes = 9});
        const QByteArray dos = "ftp://127.0.0.1:9/pub/dos.bin\r\n/d/dos.bin\r\n 3000 \r\n 1001 \r\n"
                               " 55 \r\nTrue\r\nana\r\nsecreta\r\nTrue\r\n";
        QCOMPARE(
            f.read("activas.dwn"),
            "http://127.0.0.1:9/uno.zip\r\n/d/uno.zip\r\n 0 \r\n 0 \r\n 7 \r\nFalse\r\n\r\n\r\n"
            "False\r\n" +
                dos +
                "ftp://127.0.0.1:9/pub/dos.bin\r\n/d/tres\r\n 0 \r\n 5 \r\n 0 \r\nFalse\r\n\r\n"
                "\r\nFalse\r\n");
        f.active.delfile(1, false);
        f.active.delfile(3, false);
        QVERIFY(!f.active.existe(1));
        QCOMPARE(f.read("activas.dwn"), dos);

        const DownloadExtras version{.validator = "\"v1\""};
        f.inactive.addnew(
            {Url1, "/d/uno", 2048, 1025, 9, true, "ana", "  s  ", true, true, version});
        f.inactive.addnew({.Data = Url2, .path = "/d/dos", .bytes = 1024, .usernm = "ana"});
        const QByteArray inactive = "http://127.0.0.1:9/uno.zip\r\n/d/uno\r\n 2048 \r\n 1025 \r\n"
                                    " 9 \r\nTrue\r\nana\r\n  s  \r\nTrue\r\nTrue\r\n"
                                    "ftp://127.0.0.1:9/pub/dos.bin\r\n/d/dos\r\n 0 \r\n 1024 \r\n"
                                    " 0 \r\nFalse\r\n\r\n\r\nFalse\r\nFalse\r\n";
        QCOMPARE(f.read("inactivas.dwn"), inactive);

        // The same, complete, as a program ended at the wrong moment leaves it.
        EngineFixture g;
        const QByteArray complete = QByteArray(dos).replace(" 1001 ", " 3000 ");
        g.write("activas.dwn", complete);
        g.write("inactivas.dwn", inactive);
        // The extras, beside the lists.
        for (const char *name : {"activas.json", "inactivas.json"})
            g.write(name, f.read(name));
        g.active.load();
        g.inactive.load();
        QVERIFY(g.desktop.calls.isEmpty());
        // Saved as complete: shown as ended, never connected, the saved time dropped. The blanks
        // around a password are lost; the second of the queue kept no credentials.
        const DownloadSlot &slot = g.active.slot(1);
        const ListRecord &first = g.inactive.registro(1);
        QCOMPARE(g.active.rowCount() + g.inactive.rowCount(), 5);
        QCOMPARE(slot.status, DownloadStatus::Finished);
        QCOMPARE(QStringList({slot.Data, slot.usernm, slot.passw, first.passw,
                              g.inactive.registro(2).usernm}),
                 QStringList({Url2, "ana", "secreta", "s", ""}));
        QCOMPARE(QList<qint64>({slot.total, slot.bytes, slot.tiempo}),
                 QList<qint64>({3000, 3000, 0}));
        QVERIFY(slot.allowredo && slot.rememb && first.locked && g.inactive.row(1).locked);
        QVERIFY(slot.extras == referer && first.extras == version);
        QVERIFY(g.inactive.registro(2).extras.isEmpty());
        // Loading does not rewrite the files it reads.
        QCOMPARE(g.read("activas.dwn") + g.read("inactivas.dwn"), complete + inactive);
    }

    void loading_data()
    {
        QTest::addColumn<bool>("active"); // else the inactive list
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("message");   // how the box begins
        QTest::addColumn<QByteArray>("extras"); // "activas.json", none when empty
        const auto row = [](const char *name, bool active, const char *content,
                            const QString &message, const char *extras = "") {
            QTest::newRow(name) << active << QByteArray(content) << message << QByteArray(extras);
        };
        const QString end = "Se ha sobrepasado el final del archivo|Error";
        row("truncated second block", true,
            "http://127.0.0.1:9/a\r\n/d/a\r\n 100 \r\n 100 \r\n 55 \r\nTrue\r\nuser\r\n"
            "pass\r\nTrue\r\nhttp://127.0.0.1:9/b\r\n/d/b\r\n 0 \r\n",
            "Error al cargar lista de activas: " + end);
        // The list is read without them.
        row("extras not readable", true,
            "http://127.0.0.1:9/a\r\n/d/a\r\n 0 \r\n 0 \r\n 0 \r\nFalse\r\n\r\n\r\nFalse\r\n",
            "Error al cargar los datos de las descargas: ", "{\"/d/a\": ");
        row("inactive, truncated second block", false,
            "http://h/a\r\n/a\r\n 1 \r\n 1 \r\n 1 \r\nFalse\r\n\r\n\r\nFalse\r\nFalse\r\n"
            "http://h/b\r\n/b\r\n 1 \r\n",
            "Error al cargar lista de inactivas: " + end);
    }

    // A file that cannot be read whole: what was read before the fault stays, one box says so.
    void loading()
    {
        QFETCH(bool, active);
        QFETCH(QByteArray, content);
        QFETCH(QString, message);
        QFETCH(QByteArray, extras);
        EngineFixture f;
        f.write(active ? "activas.dwn" : "inactivas.dwn", content);
        if (!extras.isEmpty())
            f.write("activas.json", extras);
        active ? f.active.load() : f.inactive.load();
        QCOMPARE(active ? f.active.rowCount() : f.inactive.rowCount(), 2); // the first download
        const QStringList boxes = f.desktop.callsOf("messageBox");
        QCOMPARE(boxes.size(), 1);
        QVERIFY2(boxes[0].startsWith("Critical|" + message), qPrintable(boxes[0]));
        QVERIFY(boxes[0].endsWith("|Error"));
        QCOMPARE(f.read(active ? "activas.dwn" : "inactivas.dwn"), content);
    }

    // The queue's own moves; its commands are pressed in the window tests.
    void queueMoves()
    {
        EngineFixture f;
        f.inactive.addnew({.Data = Url1, .path = f.path("a"), .locked = true});
        // Only locked downloads: nothing moves, the file (with the lock) is written all the same.
        QFile::remove(f.path("inactivas.dwn"));
        f.inactive.toactivas();
        QCOMPARE(f.active.rowCount(), 1);
        QVERIFY(f.read("inactivas.dwn").endsWith("True\r\n"));

        f.inactive.addnew({.Data = Url2, .path = f.path("b")});
        f.inactive.setSeleccionado(1);
        f.inactive.toactivas();
        QCOMPARE(f.active.rowCount(), 2);
        QCOMPARE(f.active.slot(1).path, f.path("b"));
        QVERIFY(!f.inactive.existe(2));
        // The line names the selected download, not the one that moved.
        QCOMPARE(f.history.lines.size(), 1);
        QVERIFY(
            f.history.lines[0].startsWith("Se continúa la descarga de " + f.path("a") + " a las "));
    }

    // What a person types: blanks around dropped, inner ones as in a request, a line break refused.
    // The prompt offers the clipboard when it holds an address, and resolves dots. Then the
    // questions quick add asks, and its refusals when the lists are full.
    void quickAdd()
    {
        EngineFixture f;
        QuickAdd quick(f.active, f.inactive, f.settings, f.desktop, f.history);
        const QString added = "http://127.0.0.1:9/mi%20archivo.zip";
        QCOMPARE(quick.add("  http://127.0.0.1:9/mi archivo.zip \t"), f.path("mi archivo.zip"));
        QCOMPARE(f.active.slot(1).Data, added);
        QCOMPARE(f.history.lines,
                 QStringList{"\r\nDescargando " + added + " a " + f.path("mi archivo.zip")});
        QVERIFY(quick.add("http://127.0.0.1:9/a\r\nb.zip").isEmpty());
        f.desktop.inputAnswers = {QStringLiteral("http://127.0.0.1:9/a/../c.zip"), std::nullopt};
        QCOMPARE(quick.newurl("http://127.0.0.1:9/a/b"), f.path("c.zip"));
        QCOMPARE(f.active.slot(2).Data, QStringLiteral("http://127.0.0.1:9/c.zip"));
        QVERIFY(quick.newurl("hola").isEmpty());
        const QString prompt = "inputBox|Escriba aquí la dirección del archivo|";
        QCOMPARE(f.desktop.calls,
                 (QStringList{"messageBox|Critical|La dirección contiene caracteres no válidos.",
                              prompt + "http://127.0.0.1:9/a/b", prompt}));
        f.desktop.calls.clear();
        f.history.lines.clear();

        // Declining the overwrite question keeps the file, the lists and the history untouched.
        f.write("a.zip", "old");
        QVERIFY(quick.add("http://127.0.0.1:9/a.zip").isEmpty());
        QCOMPARE(f.read("a.zip"), QByteArray("old"));
        QCOMPARE(f.active.rowCount(), 3);
        QVERIFY(f.history.lines.isEmpty());
        f.desktop.yesNoAnswers = {true};
        QCOMPARE(quick.add("http://127.0.0.1:9/a.zip"), f.path("a.zip"));
        QVERIFY(!QFile::exists(f.path("a.zip")));
        // The prompt asks for an FTP login and keeps what the person gives.
        f.desktop.inputAnswers = {QStringLiteral("ftp://127.0.0.1:9/pub/f.bin")};
        f.desktop.loginAnswers = {FtpCredentials{"ana", "secreta", true}};
        QCOMPARE(quick.newurl({}), f.path("f.bin"));
        const DownloadSlot &login = f.active.slot(4);
        QCOMPARE(QStringList({login.usernm, login.passw}), QStringList({"ana", "secreta"}));
        QVERIFY(login.rememb);
        QCOMPARE(f.desktop.callsOf("askFtpLogin"),
                 QStringList{"Usuario/Contraseña|anonymous|freepwd"});

        // Room for five (the template row counts): the next waits in the queue; the bar logs in to
        // FTP as anonymous.
        f.settings.maxdesc = "6";
        QCOMPARE(quick.add("ftp://127.0.0.1:9/pub/my%20file.txt"), f.path("my file.txt"));
        QCOMPARE(quick.add("ftp://127.0.0.1:9/pub/b.txt"), f.path("b.txt"));
        const ListRecord &queued = f.inactive.registro(1);
        QCOMPARE(QStringList({queued.Data, queued.usernm, queued.passw}),
                 QStringList({"ftp://127.0.0.1:9/pub/b.txt", "anonymous", "freepwd"}));

        // Both lists full: each way says so in its own words; nothing is added or logged.
        f.settings.maxdesc = "1";
        for (int i = 0; i < 39; ++i) // the queue holds 40 with its unused slot 0
            f.inactive.addnew({.Data = "http://h/x", .path = "/x"}, Loading::Yes);
        const qsizetype logged = f.history.lines.size();
        f.desktop.inputAnswers = {QStringLiteral("http://127.0.0.1:9/g")};
        QVERIFY(quick.add("http://127.0.0.1:9/c").isEmpty());
        QVERIFY(quick.newurl({}).isEmpty());
        QCOMPARE(
            f.desktop.callsOf("messageBox"),
            QStringList({"Critical|Ya se ha superado el máximo de descargas.",
                         "Critical|Ya se ha alcanzado el máximo posible de descargas en cola."}));
        QCOMPARE(f.history.lines.size(), logged);
    }

    // A download survives as many losses as it has retries; the next one exhausts it, says so in
    // the tray as chosen and deletes the partial file as chosen.
    void retryBudget()
    {
        EngineFixture f;
        f.settings.vecesv = 3;
        f.settings.delinc = 1;
        f.settings.msgdialog = false;
        f.settings.msgsys = true;
        f.write("parcial", "12345");
        const QString url = "http://127.0.0.1:9/parcial";
        QCOMPARE(f.add(url, "parcial"), 1);
        for (int left : {2, 1, 0}) {
            f.transfer(1).redoTick();
            QCOMPARE(f.transfer(1).redoBudget(), left);
        }
        QVERIFY(f.desktop.calls.isEmpty());
        f.transfer(1).redoTick();
        QVERIFY(!f.active.existe(1));
        QVERIFY(!QFile::exists(f.path("parcial")));
        QCOMPARE(f.desktop.calls,
                 QStringList{"raiseTrayIndicator|Se han agotado los intentos para " + url});
        QVERIFY(f.read("activas.dwn").isEmpty());
    }

    void speeds()
    {
        EngineFixture f;
        QSignalSpy status(&f.active, &ActiveList::statusText);

        // Two servers send 300 Kb and 100.5 Kb of a 1800 Kb file and then nothing, the first over
        // two seconds, the second over one; a third download is still connecting and does not
        // count.
        ScriptedHttpServer server([](const QByteArray &request, int) {
            const int sent = request.contains("a.bin") ? 300 * 1024 : 100 * 1024 + 512;
            HttpReply reply = HttpReply::of("HTTP/1.1 200 OK\r\nContent-Length: 1843200\r\n\r\n" +
                                            QByteArray(sent, 'x'));
            reply.stall = true;
            return reply;
        });
        f.add(server.url("a.bin"), "a");
        QTRY_COMPARE(f.active.slot(1).bytes, 300 * 1024 + 1);
        f.active.tiempotransTick();
        f.add(server.url("b.bin"), "b");
        f.add("http://127.0.0.1:9/c", "c");
        QTRY_COMPARE(f.active.slot(2).bytes, 100 * 1024 + 512 + 1);
        f.active.tiempotransTick();
        f.active.setSeleccionado(1);

        f.active.updateTick();
        // 150 and 100 (100.5 rounds to even); the selected one's speed and time left.
        QCOMPARE(status.last().at(0).value<StatusPanel>(), StatusPanel::Velmedia);
        QCOMPARE(status.last().at(1).toString(),
                 QStringLiteral("Vel. Total: 250Kb/seg||Vel. Media: 83.33 Kb/seg"));
        QCOMPARE(QStringList({f.active.details().velmedia, f.active.details().tiemporest}),
                 QStringList({"150 Kb/seg", "0:00:10"}));
    }

    void shutdownWhenAllDone()
    {
        EngineFixture f;
        QSignalSpy requested(&f.active, &ActiveList::shutdownRequested);
        f.active.addnew({.Data = "http://127.0.0.1:9/x", .path = f.path("x")});
        f.active.addnew(
            {.Data = "http://127.0.0.1:9/y", .path = f.path("y"), .total = 5, .bytes = 5});
        f.active.shutdownTick();
        f.active.setApagar(true);
        f.active.shutdownTick();
        QVERIFY(f.desktop.calls.isEmpty());
        // Only a finished download is left.
        f.active.delfile(1, false);
        f.active.shutdownTick();
        f.active.shutdownTick();
        QCOMPARE(f.desktop.calls, QStringList{"powerOff"});
        QCOMPARE(requested.size(), 1);
    }

    // The commands on all downloads, over three running and two queued, each with a partial file.
    void allDownloads_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<bool>("yes");
        QTest::addColumn<QList<int>>("rows"); // in the active and inactive lists, templates too
        QTest::addColumn<QString>("files");   // the partial files left
        const QString all = "a1 a2 a3 i1 i2";
        QTest::newRow("detall, No") << "detall" << false << QList{4, 3} << all;
        QTest::newRow("detact") << "detact" << true << QList{1, 3} << "i1 i2";
        QTest::newRow("detinactivas") << "detinactivas" << true << QList{4, 1} << "a1 a2 a3";
        QTest::newRow("pauseall keeps the files") << "pauseall" << true << QList{1, 6} << all;
        // Four run at once, the template row counted: one stays queued. It asks nothing.
        QTest::newRow("contall until the active list is full")
            << "contall" << false << QList{5, 2} << all;
    }

    void allDownloads()
    {
        QFETCH(QString, command);
        QFETCH(QList<int>, rows);
        QFETCH(bool, yes);
        EngineFixture f;
        for (const QString name : {"a1", "a2", "a3", "i1", "i2"}) {
            f.write(name, "part");
            const ListRecord record{.Data = "http://127.0.0.1:9/" + name, .path = f.path(name)};
            if (name.startsWith('a'))
                f.active.addnew(record, Loading::Yes);
            else
                f.inactive.addnew(record);
        }
        f.desktop.yesNoAnswers = {yes};
        f.settings.maxdescval = 5;
        AllDownloads all(f.active, f.inactive, f.desktop, f.history);
        const QHash<QString, void (AllDownloads::*)()> commands{
            {"detall", &AllDownloads::detall},
            {"detact", &AllDownloads::detact},
            {"detinactivas", &AllDownloads::detinactivas},
            {"pauseall", &AllDownloads::pauseall},
            {"contall", &AllDownloads::contall}};
        (all.*commands.value(command))();

        QCOMPARE((QList{f.active.rowCount(), f.inactive.rowCount()}), rows);
        QTEST(QDir(f.dir.path()).entryList({"a?", "i?"}).join(' '), "files");
        QCOMPARE(f.history.lines.size(), command.startsWith("det") && yes ? 1 : 0);
        // What moved between the lists is in both list files.
        QCOMPARE(f.read("inactivas.dwn").count("http://"), rows[1] - 1);
    }
};

QTEST_GUILESS_MAIN(TestLists)
#include "tst_lists.moc"
