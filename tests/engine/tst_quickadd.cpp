#include "enginefixture.h"
#include "quickadd.h"

#include <QTest>

class TestQuickAdd : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void placement_data();
    void placement();
    void refusals();
};

void TestQuickAdd::placement_data()
{
    QTest::addColumn<int>("running");
    QTest::addColumn<bool>("toActive");
    QTest::newRow("eight running: one more runs") << 8 << true;
    QTest::newRow("nine running: queued") << 9 << false;
}

void TestQuickAdd::placement()
{
    QFETCH(int, running);
    QFETCH(bool, toActive);
    EngineFixture f;
    f.settings.maxdesc = "10";
    for (int i = 0; i < running; ++i)
        f.active.addnew("http://127.0.0.1:9/r", f.path("r"), 0, 0, false, 0, true, "", "", false);
    QuickAdd quick(f.active, f.inactive, f.settings, f.desktop, f.history);
    const QString url = "ftp://127.0.0.1:9/pub/my%20file.txt";
    QCOMPARE(quick.add(url), f.path("my file.txt"));
    QCOMPARE(f.active.rowCount(), running + 1 + (toActive ? 1 : 0));
    QCOMPARE(f.inactive.rowCount(), toActive ? 1 : 2);
    ListRecord added = f.inactive.registro(1);
    if (toActive) {
        const DownloadSlot &slot = f.active.slotAt(running + 1);
        added =
            ListRecord{slot.Data, slot.path, 0, 0, 0, false, slot.usernm, slot.passw, false, false};
    }
    QCOMPARE(added.Data, url);
    QCOMPARE(added.usernm, QStringLiteral("anonymous"));
    QCOMPARE(added.passw, QStringLiteral("freepwd"));
    QCOMPARE(f.history.lines,
             QStringList{"\r\nDescargando " + url + " a " + f.path("my file.txt")});
}

void TestQuickAdd::refusals()
{
    EngineFixture f;
    QuickAdd quick(f.active, f.inactive, f.settings, f.desktop, f.history);
    // The scheme is compared as typed; the message names the two original schemes only.
    QVERIFY(quick.add("HTTP://h/a").isEmpty());
    QVERIFY(quick.add("HTTPS://h/a").isEmpty());
    QCOMPARE(f.desktop.callsOf("messageBox"),
             QStringList(2, "Critical|Escriba una dirección correcta (debe empezar por http:// o "
                            "ftp://)"));
    QCOMPARE(quick.add("https://127.0.0.1:9/s.zip"), f.path("s.zip"));

    // Declining the overwrite question keeps the file, the lists and the history untouched.
    f.write("a.zip", "old");
    QVERIFY(quick.add("http://127.0.0.1:9/a.zip").isEmpty());
    QCOMPARE(f.read("a.zip"), QByteArray("old"));
    f.desktop.yesNoAnswers = {true};
    QCOMPARE(quick.add("http://127.0.0.1:9/a.zip"), f.path("a.zip"));
    QVERIFY(!QFile::exists(f.path("a.zip")));
    // The same address again is a second download.
    QCOMPARE(quick.add("http://127.0.0.1:9/a.zip"), f.path("a.zip"));
    QCOMPARE(f.active.rowCount(), 4);
    QCOMPARE(f.history.lines.size(), 3);

    // Both lists full.
    f.settings.maxdesc = "1";
    for (int i = 1; i <= 39; ++i)
        f.inactive.addnew("http://h/x", "/x", 0, 0, false, 0, true, "", "", false, false);
    QVERIFY(quick.add("http://127.0.0.1:9/b").isEmpty());
    QCOMPARE(f.desktop.callsOf("messageBox").last(),
             QStringLiteral("Critical|Ya se ha superado el máximo de descargas."));
}

QTEST_GUILESS_MAIN(TestQuickAdd)
#include "tst_quickadd.moc"
