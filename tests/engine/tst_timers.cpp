#include "enginefixture.h"
#include "scriptedhttpserver.h"
#include "transfer.h"

#include <QSignalSpy>
#include <QTest>

class TestTimers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void retryBudget_data();
    void retryBudget();
    void stallUsesOneRetry();
    void speeds();
    void shutdownWhenAllDone();
};

void TestTimers::retryBudget_data()
{
    QTest::addColumn<int>("retries");
    QTest::addColumn<QString>("choice");
    QTest::addColumn<int>("delinc");
    QTest::newRow("no retries, window") << 0 << "dialog" << 0;
    QTest::newRow("three retries, tray, delete partial") << 3 << "sys" << 1;
    QTest::newRow("one retry, silent") << 1 << "no" << 0;
}

void TestTimers::retryBudget()
{
    QFETCH(int, retries);
    QFETCH(QString, choice);
    QFETCH(int, delinc);
    EngineFixture f;
    f.settings.vecesv = retries;
    f.settings.delinc = delinc;
    f.settings.msgdialog = choice == "dialog";
    f.settings.msgsys = choice == "sys";
    f.settings.msgno = choice == "no";
    f.write("parcial", "12345");
    const QString url = "http://127.0.0.1:9/parcial";
    QCOMPARE(f.active.addnew(url, f.path("parcial"), 0, 0, false, 0, false, "", "", false), 1);

    // A download survives as many losses as it has retries; the next one exhausts it.
    for (int i = 0; i < retries; ++i) {
        f.active.transferAt(1)->redoTick();
        QVERIFY(f.active.existe(1));
        QVERIFY(f.row(1).reconectando());
        QCOMPARE(f.active.transferAt(1)->redoBudget(), retries - i - 1);
    }
    QVERIFY(f.desktop.calls.isEmpty());
    f.active.transferAt(1)->redoTick();
    QVERIFY(!f.active.existe(1));
    QCOMPARE(f.active.rowCount(), 1);
    QCOMPARE(QFile::exists(f.path("parcial")), delinc == 0);
    const QString text = "Se han agotado los intentos para " + url;
    QStringList expected;
    if (choice == "dialog")
        expected << "showMessageWindow|" + text + "|";
    if (choice == "sys")
        expected << "raiseTrayIndicator|" + text;
    QCOMPARE(f.desktop.calls, expected);
    QVERIFY(f.read("activas.dwn").isEmpty());
}

void TestTimers::stallUsesOneRetry()
{
    EngineFixture f;
    f.settings.waitv = 5;
    const QByteArray content = randomBytes(50000);
    ScriptedHttpServer server([&](const QByteArray &request, int index) {
        HttpReply reply = ScriptedHttpServer::file(content, request, true);
        if (index == 0) {
            reply.dropAfter = reply.bytes.indexOf("\r\n\r\n") + 4 + 1000;
            reply.stall = true;
        }
        return reply;
    });
    f.active.addnew(server.url("f.bin"), f.path("f.bin"), 0, 0, false, 0, false, "", "", false);
    QTRY_COMPARE(f.active.slotAt(1).bytes, 1001);
    Transfer &transfer = *f.active.transferAt(1);
    for (int i = 0; i < 5; ++i)
        f.active.tiempotransTick();
    QVERIFY(!transfer.redoActive());
    f.active.tiempotransTick();
    QVERIFY(transfer.redoActive());
    QCOMPARE(f.active.slotAt(1).tiempo, 6);
    // Further silent seconds leave the waiting retry alone.
    f.active.tiempotransTick();
    QCOMPARE(transfer.redoBudget(), 5);

    // The retry and the next tick in the same instant: the new attempt is not judged silent.
    transfer.redoTick();
    f.active.tiempotransTick();
    QVERIFY(!transfer.redoActive());
    QTRY_VERIFY(f.row(1).finalizado());
    QCOMPARE(transfer.redoBudget(), 4);
    QCOMPARE(server.connections(), 2);
    QCOMPARE(f.read("f.bin"), content);
}

void TestTimers::speeds()
{
    EngineFixture f;
    QSignalSpy status(&f.active, &ActiveList::statusText);
    f.active.updateTick();
    QCOMPARE(status.last().at(1).toString(),
             QStringLiteral("Vel. Total: 0Kb/seg||Vel. Media: 0 Kb/seg"));

    for (const char *name : {"a", "b", "c"})
        f.active.addnew(QStringLiteral("http://127.0.0.1:9/") + name, f.path(name), 0, 0, false, 0,
                        true, "", "", false);
    // Slot 1: 300 Kb in 2 s since this connection began; slot 2: 100.5 Kb in 1 s; slot 3 is
    // still connecting and does not count.
    DownloadSlot &a = f.active.slotAt(1);
    a.bytesinicio = 1 + 1024 * 100;
    a.bytes = a.bytesinicio + 300 * 1024;
    a.total = a.bytes - 1 + 1024 * 1500;
    a.tiempoinicio = 10;
    a.tiempo = 12;
    DownloadSlot &b = f.active.slotAt(2);
    b.bytesinicio = 1;
    b.bytes = 1 + 1024 * 100 + 512;
    b.tiempo = 1;
    f.active.slotAt(3).tiempo = 4;
    f.active.slotAt(3).bytes = 4096;
    f.row(1).setReconectando(false);
    f.row(2).setReconectando(false);
    f.active.setSeleccionado(1);

    f.active.updateTick();
    QCOMPARE(a.velocidad, 150);
    QCOMPARE(b.velocidad, 100); // 100.5 rounds to even
    QCOMPARE(status.last().at(0).toInt(), 2);
    QCOMPARE(status.last().at(1).toString(),
             QStringLiteral("Vel. Total: 250Kb/seg||Vel. Media: 83.33 Kb/seg"));
    QCOMPARE(f.active.details().velmedia, QStringLiteral("150 Kb/seg"));
    QCOMPARE(f.active.details().tiemporest, QStringLiteral("0:00:10"));

    f.active.setSeleccionado(3);
    f.active.updateTick();
    QCOMPARE(f.active.details().tiemporest, QStringLiteral("*"));
}

void TestTimers::shutdownWhenAllDone()
{
    EngineFixture f;
    QSignalSpy requested(&f.active, &ActiveList::shutdownRequested);
    f.active.addnew("http://127.0.0.1:9/x", f.path("x"), 0, 0, false, 0, true, "", "", false);
    f.active.shutdownTick();
    f.active.setApagar(true);
    f.active.shutdownTick();
    QVERIFY(f.desktop.calls.isEmpty());
    f.row(1).DownloadEnd();
    f.row(1).setFinalizado(true);
    f.active.shutdownTick();
    f.active.shutdownTick();
    QCOMPARE(f.desktop.calls, QStringList{"powerOff"});
    QCOMPARE(requested.size(), 1);
}

QTEST_GUILESS_MAIN(TestTimers)
#include "tst_timers.moc"
