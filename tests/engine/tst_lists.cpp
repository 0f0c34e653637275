#include "enginefixture.h"

#include <QTest>

namespace {

const QString Url1 = QStringLiteral("http://127.0.0.1:9/uno.zip");
const QString Url2 = QStringLiteral("ftp://127.0.0.1:9/pub/dos.bin");

} // namespace

class TestLists : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void activeFileBytes();
    void activeLoad_data();
    void activeLoad();
    void limits();
    void badAddress();
    void inactiveFileAndLoad();
    void inactiveTruncated();
    void pullNext();
    void inactiveCommands();
};

void TestLists::activeFileBytes()
{
    EngineFixture f;
    QCOMPARE(f.active.addnew(Url1, "/d/uno.zip", 0, 0, false, 7, false, "", "", false), 1);
    QCOMPARE(
        f.active.addnew(Url2, "/d/dos.bin", 3000, 1001, true, 0, false, "ana", "secreta", true), 2);
    // A third with credentials it was not asked to remember, then finished: not saved.
    QCOMPARE(f.active.addnew(Url2, "/d/tres", 0, 0, false, 0, false, "u", "p", false), 3);
    f.active.slotAt(3).bytes = 5;
    f.active.guardar_lista_activas();
    const QByteArray expected =
        "http://127.0.0.1:9/uno.zip\r\n/d/uno.zip\r\n 0 \r\n 0 \r\n 7 \r\n"
        "False\r\n\r\n\r\nFalse\r\n"
        "ftp://127.0.0.1:9/pub/dos.bin\r\n/d/dos.bin\r\n 3000 \r\n 1001 \r\n"
        " 0 \r\nTrue\r\nana\r\nsecreta\r\nTrue\r\n"
        "ftp://127.0.0.1:9/pub/dos.bin\r\n/d/tres\r\n 0 \r\n 5 \r\n 0 \r\n"
        "False\r\n\r\n\r\nFalse\r\n";
    QCOMPARE(f.read("activas.dwn"), expected);

    f.active.rowAt(3)->DownloadEnd();
    f.active.rowAt(3)->setFinalizado(true);
    f.active.delfile(1, false);
    QVERIFY(!f.active.existe(1));
    QCOMPARE(f.read("activas.dwn"),
             expected.mid(expected.indexOf("ftp://"),
                          expected.lastIndexOf("ftp://") - expected.indexOf("ftp://")));
}

void TestLists::activeLoad_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("rows");
    QTest::addColumn<QString>("message");

    const QByteArray complete = "http://127.0.0.1:9/a\r\n/d/a\r\n 100 \r\n 100 \r\n 55 \r\n"
                                "True\r\nuser\r\npass\r\nTrue\r\n";
    QTest::newRow("complete record") << complete << 1 << "";
    QTest::newRow("truncated second block")
        << complete + "http://127.0.0.1:9/b\r\n/d/b\r\n 0 \r\n"
        << 1 << "Error al cargar lista de activas: Se ha sobrepasado el final del archivo";
    QTest::newRow("garbled boolean") << QByteArray("http://127.0.0.1:9/a\r\n/d/a\r\n1\r\n2\r\n3\r\n"
                                                   "quizas\r\n\r\n\r\nFalse\r\n")
                                     << 0 << "Error al cargar lista de activas: ";
    QTest::newRow("binary garbage")
        << QByteArray("\x00\xff\r\n\x01", 5) << 0 << "Error al cargar lista de activas: ";
}

void TestLists::activeLoad()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, message);
    EngineFixture f;
    f.write("activas.dwn", content);
    f.active.load();
    QTEST(f.active.rowCount() - 1, "rows");
    const QStringList boxes = f.desktop.callsOf("messageBox");
    if (message.isEmpty()) {
        QVERIFY(boxes.isEmpty());
        // Saved as complete: shown as ended, never connected, the saved time dropped.
        QVERIFY(f.row(1).finalizado());
        QCOMPARE(f.active.slotAt(1).tiempo, 0);
        QCOMPARE(f.active.slotAt(1).usernm, QStringLiteral("user"));
        QCOMPARE(f.active.slotAt(1).total, 100);
        QVERIFY(f.active.slotAt(1).allowredo);
    } else {
        QCOMPARE(boxes.size(), 1);
        QVERIFY2(boxes[0].startsWith("Critical|" + message), qPrintable(boxes[0]));
        QVERIFY(boxes[0].endsWith("|Error"));
    }
    // Loading does not rewrite the file it reads.
    QCOMPARE(f.read("activas.dwn"), content);
}

void TestLists::limits()
{
    EngineFixture f;
    f.settings.maxdescval = 3;
    for (const char *name : {"a", "b", "c"}) {
        f.desktop.fileAnswers.push_back(f.path(name));
        f.active.AgregarArrastrando(QStringLiteral("http://127.0.0.1:9/") + name);
    }
    // The template row counts: two run, the third waits in the queue.
    QCOMPARE(f.active.rowCount(), 3);
    QCOMPARE(f.inactive.rowCount(), 2);
    QCOMPARE(f.inactive.registro(1).path, f.path("c"));
    QCOMPARE(f.desktop.callsOf("saveFileDialog").first(), f.dir.path() + "/a|");

    // A cancelled save dialog adds nothing.
    f.active.AgregarArrastrando(QStringLiteral("http://127.0.0.1:9/d"));
    QCOMPARE(f.inactive.rowCount(), 2);

    // The queue holds 40.
    for (int i = 2; i <= 40; ++i)
        f.inactive.addnew("http://h/x", "/x", 0, 0, false, 0, true, "", "", false, false);
    f.desktop.fileAnswers.push_back(f.path("e"));
    f.active.AgregarArrastrando(QStringLiteral("http://127.0.0.1:9/e"));
    QCOMPARE(f.desktop.callsOf("messageBox"),
             QStringList{"Critical|Se ha alcanzado el máximo de descargas en cola."});
}

void TestLists::badAddress()
{
    EngineFixture f;
    QCOMPARE(f.active.addnew("HTTPS://h/a", "/a", 0, 0, false, 0, false, "", "", false), 0);
    QCOMPARE(f.active.addnew("http://h:80", "/a", 0, 0, false, 0, false, "", "", false), 0);
    QCOMPARE(f.active.rowCount(), 1);
    QCOMPARE(f.desktop.callsOf("messageBox"),
             (QStringList{"Critical|Dirección incorrecta.",
                          "Critical|No se ha podido agregar el archivo:\r\nhttp://h:80"}));
    QVERIFY(!QFile::exists(f.path("activas.dwn")));
}

void TestLists::inactiveFileAndLoad()
{
    EngineFixture f;
    f.inactive.addnew(Url1, "/d/uno", 2048, 1025, true, 9, false, "ana", "  s  ", true, true);
    f.inactive.addnew(Url2, "/d/dos", 0, 1024, false, 0, false, "ana", "s", false, false);
    const QByteArray expected = "http://127.0.0.1:9/uno.zip\r\n/d/uno\r\n 2048 \r\n 1025 \r\n"
                                " 9 \r\nTrue\r\nana\r\n  s  \r\nTrue\r\nTrue\r\n"
                                "ftp://127.0.0.1:9/pub/dos.bin\r\n/d/dos\r\n 0 \r\n 1024 \r\n"
                                " 0 \r\nFalse\r\n\r\n\r\nFalse\r\nFalse\r\n";
    QCOMPARE(f.read("inactivas.dwn"), expected);
    QCOMPARE(f.inactive.rowAt(1)->bytes(), QStringLiteral("1 Kb"));
    QCOMPARE(f.inactive.rowAt(1)->porcentaje(), 50);
    QCOMPARE(f.inactive.rowAt(2)->bytes(), QStringLiteral("1024 bytes"));

    EngineFixture g;
    g.write("inactivas.dwn", expected);
    g.inactive.load();
    QCOMPARE(g.inactive.rowCount(), 3);
    // The blanks around the password are lost; the second kept no credentials.
    QCOMPARE(g.inactive.registro(1).passw, QStringLiteral("s"));
    QVERIFY(g.inactive.registro(1).locked && g.inactive.rowAt(1)->locked());
    QCOMPARE(g.inactive.registro(2).usernm, QString());
    QVERIFY(g.desktop.calls.isEmpty());
}

void TestLists::inactiveTruncated()
{
    EngineFixture f;
    f.write("inactivas.dwn", "http://h/a\r\n/a\r\n 1 \r\n 1 \r\n 1 \r\nFalse\r\n\r\n\r\nFalse\r\n"
                             "False\r\nhttp://h/b\r\n/b\r\n 1 \r\n");
    f.inactive.load();
    QCOMPARE(f.inactive.rowCount(), 2);
    QCOMPARE(f.desktop.callsOf("messageBox"),
             QStringList{"Critical|Error al cargar lista de inactivas: Se ha sobrepasado el "
                         "final del archivo|Error"});
}

void TestLists::pullNext()
{
    EngineFixture f;
    f.inactive.addnew("http://127.0.0.1:9/a", f.path("a"), 0, 0, false, 0, false, "", "", false,
                      true);
    // Only locked downloads: nothing moves, the file is written all the same.
    QFile::remove(f.path("inactivas.dwn"));
    f.inactive.toactivas();
    QCOMPARE(f.active.rowCount(), 1);
    QVERIFY(QFile::exists(f.path("inactivas.dwn")));

    f.inactive.addnew("http://127.0.0.1:9/b", f.path("b"), 0, 0, false, 0, false, "", "", false,
                      false);
    f.inactive.setSeleccionado(1);
    f.inactive.toactivas();
    QCOMPARE(f.active.rowCount(), 2);
    QCOMPARE(f.active.slotAt(1).path, f.path("b"));
    QVERIFY(!f.inactive.existe(2));
    // The line names the selected download, not the one that moved.
    QCOMPARE(f.history.lines.size(), 1);
    QVERIFY(f.history.lines[0].startsWith("Se continúa la descarga de " + f.path("a") + " a las "));
}

void TestLists::inactiveCommands()
{
    EngineFixture f;
    f.settings.maxdescval = 2;
    f.inactive.addnew("http://127.0.0.1:9/a", f.path("nada"), 0, 0, false, 0, false, "", "", false,
                      false);
    f.inactive.addnew("http://127.0.0.1:9/b", f.path("b"), 0, 0, false, 0, false, "", "", false,
                      false);
    f.active.addnew("http://127.0.0.1:9/c", f.path("c"), 0, 0, false, 0, false, "", "", false);

    // Continue with the active list full: only the message.
    f.inactive.setSeleccionado(2);
    f.inactive.CallContinue();
    QCOMPARE(f.desktop.callsOf("messageBox"),
             QStringList{"Critical|Ya hay activas el número máximo configurado."});
    QCOMPARE(f.inactive.seleccionado(), 2);
    QVERIFY(f.inactive.existe(2));

    // Lock toggles and is saved.
    f.inactive.bloquear();
    QVERIFY(f.inactive.registro(2).locked && f.inactive.rowAt(2)->locked());
    QVERIFY(f.read("inactivas.dwn").endsWith("True\r\n"));

    // Cancel asks; No changes nothing, Yes removes and logs even without a file to delete.
    f.inactive.setSeleccionado(1);
    f.inactive.CallCancel();
    QVERIFY(f.inactive.existe(1));
    f.desktop.yesNoAnswers = {true};
    f.inactive.CallCancel();
    QVERIFY(!f.inactive.existe(1));
    QCOMPARE(f.desktop.callsOf("askYesNo").last(),
             "¿Seguro que desea cancelar la transferencia de " + f.path("nada") + "?");
    QVERIFY(f.history.lines.last().startsWith("Cancelada la descarga de " + f.path("nada")));

    // With room, continue moves it to the active list.
    f.settings.maxdescval = 10;
    f.inactive.setSeleccionado(2);
    f.inactive.CallContinue();
    QVERIFY(!f.inactive.existe(2));
    QCOMPARE(f.active.slotAt(2).path, f.path("b"));
    QCOMPARE(f.inactive.seleccionado(), 0);
}

QTEST_GUILESS_MAIN(TestLists)
#include "tst_lists.moc"
