#include "enginefixture.h"
#include "localservers.h"
#include "scriptedhttpserver.h"
#include "transfer.h"

#include <QSignalSpy>
#include <QTest>

namespace {

const QByteArray Content = randomBytes(200000);

HttpReply serveContent(const QByteArray &request, int)
{
    return ScriptedHttpServer::file(Content, request, true);
}

} // namespace

class TestHttp : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void requestBytes_data();
    void requestBytes();
    void resumeAfterDrop_data();
    void resumeAfterDrop();
    void redirectWithLfLf();
    void finalAnswers_data();
    void finalAnswers();
    void endWithoutLength();
    void closeTolerance_data();
    void closeTolerance();
    void stallRetriedOnce();
    void badReplies_data();
    void badReplies();
    void realServer();
};

void TestHttp::requestBytes_data()
{
    QTest::addColumn<int>("onDisk");
    QTest::addColumn<QByteArray>("range");
    QTest::newRow("fresh") << 0 << QByteArray("0");
    QTest::newRow("resumed") << 1000 << QByteArray("1000");
}

void TestHttp::requestBytes()
{
    QFETCH(int, onDisk);
    QFETCH(QByteArray, range);
    EngineFixture f;
    ScriptedHttpServer server(serveContent);
    if (onDisk)
        f.write("f.bin", Content.left(onDisk));
    f.active.addnew(server.url("dir/f.bin"), f.path("f.bin"), 0, onDisk ? onDisk + 1 : 0,
                    onDisk > 0, 0, false, "", "", false);
    QTRY_VERIFY(f.row(1).finalizado());
    QCOMPARE(server.requests().value(0),
             "GET /dir/f.bin HTTP/1.1\r\nUser-Agent: Corvane\r\nHost: 127.0.0.1\r\n"
             "Connection: close\r\nRange: bytes=" +
                 range + "-\r\n\r\n");
    QCOMPARE(f.read("f.bin"), Content);
    QCOMPARE(f.active.slotAt(1).total, Content.size());
    QVERIFY(f.active.slotAt(1).allowredo);
    QCOMPARE(f.row(1).porcentaje(), 100);
    QCOMPARE(f.history.lines.size(), 1);
    QVERIFY(f.history.lines[0].startsWith("\r\nLa descarga de " + server.url("dir/f.bin") + " a " +
                                          f.path("f.bin") + " ha finalizado tras "));
}

void TestHttp::resumeAfterDrop_data()
{
    QTest::addColumn<bool>("honourRange");
    QTest::newRow("206: continues") << true;
    QTest::newRow("200: starts again from the first byte") << false;
}

void TestHttp::resumeAfterDrop()
{
    QFETCH(bool, honourRange);
    EngineFixture f;
    ScriptedHttpServer server([&](const QByteArray &request, int index) {
        HttpReply reply = ScriptedHttpServer::file(Content, request, honourRange);
        if (index == 0)
            reply.dropAfter = reply.bytes.indexOf("\r\n\r\n") + 4 + 30000;
        return reply;
    });
    QSignalSpy status(&f.active, &ActiveList::statusText);
    const QString url = server.url("f.bin");
    f.active.addnew(url, f.path("f.bin"), 0, 0, false, 0, false, "", "", false);
    QTRY_VERIFY(f.active.transferAt(1)->redoActive());
    QCOMPARE(status.last().at(1).toString(),
             "Se ha perdido la conexión con " + url + " . Reconectando...");
    QVERIFY(f.row(1).reconectando());
    QCOMPARE(f.active.slotAt(1).bytes, 30001);

    f.active.transferAt(1)->redoTick();
    QTRY_VERIFY(f.row(1).finalizado());
    QCOMPARE(ScriptedHttpServer::rangeStart(server.requests().value(1)), 30000);
    QCOMPARE(f.read("f.bin"), Content);
    QCOMPARE(f.active.slotAt(1).allowredo, honourRange);
    QCOMPARE(f.active.slotAt(1).total, Content.size());
    QCOMPARE(f.active.transferAt(1)->redoBudget(), 4);
}

void TestHttp::redirectWithLfLf()
{
    EngineFixture f;
    ScriptedHttpServer target(serveContent);
    ScriptedHttpServer server([&](const QByteArray &, int) {
        return HttpReply::of(
            "HTTP/1.1 302 Found\nLocation: " + target.url("nuevo/f.bin").toLatin1() + "\n\n");
    });
    QSignalSpy status(&f.active, &ActiveList::statusText);
    const QString url = server.url("viejo/f.bin");
    f.active.addnew(url, f.path("f.bin"), 0, 0, false, 0, false, "", "", false);
    QTRY_VERIFY(f.row(1).finalizado());
    QCOMPARE(status.first().at(1).toString(), "El archivo " + url + " ha sido movido a " +
                                                  target.url("nuevo/f.bin") +
                                                  ".Se reconectará a esa dirección");
    QVERIFY(target.requests().value(0).startsWith("GET /nuevo/f.bin HTTP/1.1\r\n"));
    QCOMPARE(f.active.slotAt(1).Data, target.url("nuevo/f.bin"));
    QCOMPARE(f.read("f.bin"), Content);
}

void TestHttp::finalAnswers_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("message"); // empty: the body is the download
    QTest::newRow("301 body written")
        << QByteArray("HTTP/1.1 301 Moved\r\nContent-Length: 5\r\n\r\nmoved") << "";
    QTest::newRow("403 not singled out")
        << QByteArray("HTTP/1.1 403 Forbidden\r\nContent-Length: 5\r\n\r\nnope!") << "";
    QTest::newRow("404") << QByteArray("HTTP/1.1 404 Not Found\r\n\r\n")
                         << "El archivo %1 no existe.";
    QTest::newRow("401") << QByteArray("HTTP/1.1 401 No\r\n\r\n") << "Acceso denegado al archivo";
    QTest::newRow("500") << QByteArray("HTTP/1.1 500 Mal\r\n\r\n")
                         << "Error interno del servidor %1.";
    QTest::newRow("400") << QByteArray("HTTP/1.1 400 Mal\r\n\r\n")
                         << "Error de sintaxis en la petición";
}

void TestHttp::finalAnswers()
{
    QFETCH(QByteArray, reply);
    QFETCH(QString, message);
    EngineFixture f;
    ScriptedHttpServer server([&](const QByteArray &, int) { return HttpReply::of(reply); });
    const QString url = server.url("f.bin");
    QSignalSpy failed(&f.active, &ActiveList::downloadFailed);
    f.active.addnew(url, f.path("f.bin"), 0, 0, false, 0, false, "", "", false);
    if (message.isEmpty()) {
        QTRY_VERIFY(f.row(1).finalizado());
        QCOMPARE(f.read("f.bin"), reply.mid(reply.indexOf("\r\n\r\n") + 4));
        QVERIFY(!f.active.slotAt(1).allowredo);
        return;
    }
    QTRY_VERIFY(f.row(1).redoend());
    const QString text = message.contains("%1") ? message.arg(url) : message;
    QCOMPARE(f.desktop.callsOf("showMessageWindow"), QStringList{text + "|"});
    QCOMPARE(failed.size(), 1);
    // Final: no retry is waiting and nothing was written.
    QTest::qWait(50);
    QVERIFY(!f.active.transferAt(1)->redoActive());
    QCOMPARE(server.requests().size(), 1);
    QCOMPARE(f.read("f.bin"), QByteArray());
    QVERIFY(!f.row(1).finalizado());
}

void TestHttp::endWithoutLength()
{
    EngineFixture f;
    ScriptedHttpServer server([](const QByteArray &request, int) {
        return ScriptedHttpServer::file(Content, request, false, false);
    });
    f.active.addnew(server.url("f.bin"), f.path("f.bin"), 0, 0, false, 0, false, "", "", false);
    QTRY_VERIFY(f.row(1).finalizado());
    QCOMPARE(f.read("f.bin"), Content);
    QCOMPARE(f.active.slotAt(1).total, 0);
    QCOMPARE(f.row(1).bytes(), QStringLiteral("195.31 Kb"));
}

void TestHttp::closeTolerance_data()
{
    QTest::addColumn<int>("sent");
    QTest::addColumn<bool>("finished");
    QTest::newRow("three short: finished") << 97 << true;
    QTest::newRow("four short: lost") << 96 << false;
}

void TestHttp::closeTolerance()
{
    QFETCH(int, sent);
    QFETCH(bool, finished);
    EngineFixture f;
    ScriptedHttpServer server([&](const QByteArray &, int) {
        return HttpReply::of("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n" + Content.left(sent));
    });
    f.active.addnew(server.url("f.bin"), f.path("f.bin"), 0, 0, false, 0, false, "", "", false);
    QTRY_VERIFY(f.row(1).finalizado() || f.active.transferAt(1)->redoActive());
    QCOMPARE(f.row(1).finalizado(), finished);
}

void TestHttp::stallRetriedOnce()
{
    EngineFixture f;
    f.settings.waitv = 5;
    ScriptedHttpServer server([&](const QByteArray &request, int index) {
        HttpReply reply = ScriptedHttpServer::file(Content, request, true);
        if (index == 0) {
            reply.dropAfter = reply.bytes.indexOf("\r\n\r\n") + 4 + 1000;
            reply.stall = true;
        }
        return reply;
    });
    f.active.addnew(server.url("f.bin"), f.path("f.bin"), 0, 0, false, 0, false, "", "", false);
    QTRY_COMPARE(f.active.slotAt(1).bytes, 1001);
    Transfer &transfer = *f.active.transferAt(1);
    for (int second = 0; second < 8; ++second)
        f.active.tiempotransTick();
    QVERIFY(transfer.redoActive());
    transfer.redoTick();
    QTRY_VERIFY(f.row(1).finalizado());
    QCOMPARE(transfer.redoBudget(), 4);
    QCOMPARE(server.requests().size(), 2);
    QCOMPARE(f.read("f.bin"), Content);
}

void TestHttp::badReplies_data()
{
    QTest::addColumn<HttpReply>("reply");
    QTest::addColumn<QByteArray>("written");
    HttpReply garbage;
    garbage.bytes = QByteArray("\x00\xff garbage \r\n\r\n", 15);
    QTest::newRow("garbage is the file") << garbage << garbage.bytes;
    HttpReply huge;
    huge.bytes = "HTTP/1.1 200 OK\r\n" +
                 QByteArray("X-Relleno: aaaaaaaaaaaaaaaa\r\n").repeated(40000) + "\r\nhola";
    // However the megabyte of head is cut into chunks, nothing breaks: a first chunk without
    // the blank line is written whole, like everything after it.
    QTest::newRow("huge head") << huge << QByteArray("hola|whole");
    HttpReply closed;
    closed.closeAtOnce = true;
    QTest::newRow("closed at once") << closed << QByteArray();
    HttpReply split;
    split.chunks = {"HTTP/1.1 200 OK\r\nContent-Le", "ngth: 5\r\n\r\nhello"};
    QTest::newRow("head split: each chunk as it comes")
        << split << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nhello");
}

void TestHttp::badReplies()
{
    QFETCH(HttpReply, reply);
    EngineFixture f;
    ScriptedHttpServer server([&](const QByteArray &, int) { return reply; });
    f.active.addnew(server.url("f.bin"), f.path("f.bin"), 0, 0, false, 0, false, "", "", false);
    // Without a usable size the close ends the download with whatever came.
    QTRY_VERIFY(f.row(1).finalizado());
    QFETCH(QByteArray, written);
    if (written == "hola|whole")
        QVERIFY(f.read("f.bin") == "hola" || f.read("f.bin") == reply.bytes);
    else
        QCOMPARE(f.read("f.bin"), written);
}

void TestHttp::realServer()
{
    const ServedFolder served("grande.bin", 3 * 1024 * 1024 + 17);
    const QByteArray &big = served.bytes;
    NginxServer nginx(served.root.path());
    QVERIFY2(nginx.start(), qPrintable(nginx.error()));

    EngineFixture f;
    f.active.addnew(nginx.url("grande.bin"), f.path("nuevo.bin"), 0, 0, false, 0, false, "", "",
                    false);
    // A partial file whose resume flag was saved as off: the 206 decides where bytes go.
    f.write("parcial.bin", big.left(1234567));
    f.active.addnew(nginx.url("grande.bin"), f.path("parcial.bin"), 0, 1234568, false, 0, false, "",
                    "", false);
    QTRY_VERIFY_WITH_TIMEOUT(f.row(1).finalizado() && f.row(2).finalizado(), 20000);
    QCOMPARE(f.read("nuevo.bin"), big);
    QCOMPARE(f.read("parcial.bin"), big);
    QCOMPARE(f.active.slotAt(2).bytesinicio, 1234568);
}

QTEST_GUILESS_MAIN(TestHttp)
#include "tst_http.moc"
