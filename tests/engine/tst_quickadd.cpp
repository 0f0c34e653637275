#include "enginefixture.h"
#include "quickadd.h"
#include "urls.h"

#include <QTest>

class TestQuickAdd : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void placement_data();
    void placement();
    void refusals();
    void typedText_data();
    void typedText();
    void newurlAnswers_data();
    void newurlAnswers();
    void newurlLoginAndFullQueue();
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

void TestQuickAdd::typedText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("added"); // empty: refused
    QTest::newRow("blanks around, inner blanks as in a request")
        << "  http://127.0.0.1:9/mi archivo.zip \t"
        << "http://127.0.0.1:9/mi%20archivo.zip";
    QTest::newRow("secure") << "https://127.0.0.1:9/a.iso"
                            << "https://127.0.0.1:9/a.iso";
    QTest::newRow("line break inside") << "http://127.0.0.1:9/a\r\nb.zip"
                                       << "";
    QTest::newRow("capital scheme") << "HTTPS://127.0.0.1:9/a"
                                    << "";
}

void TestQuickAdd::typedText()
{
    QFETCH(QString, text);
    QFETCH(QString, added);
    EngineFixture f;
    QuickAdd quick(f.active, f.inactive, f.settings, f.desktop, f.history);
    const QString path = quick.add(text);
    QCOMPARE(path.isEmpty(), added.isEmpty());
    QCOMPARE(f.active.rowCount(), added.isEmpty() ? 1 : 2);
    if (added.isEmpty()) {
        QCOMPARE(f.desktop.callsOf("messageBox").size(), 1);
        return;
    }
    QCOMPARE(f.active.slotAt(1).Data, added);
    // The file name has its blanks back.
    QCOMPARE(QFileInfo(path).fileName(), FileNameOf(added));
}

void TestQuickAdd::newurlAnswers_data()
{
    QTest::addColumn<QString>("clipboard");
    QTest::addColumn<QString>("offered");
    QTest::addColumn<std::optional<QString>>("answer");
    QTest::addColumn<QString>("added"); // empty: refused or cancelled
    const std::optional<QString> cancel;
    QTest::newRow("clipboard address offered, dots resolved")
        << "http://127.0.0.1:9/a/b"
        << "http://127.0.0.1:9/a/b" << std::optional<QString>("http://127.0.0.1:9/a/../c.zip")
        << "http://127.0.0.1:9/c.zip";
    QTest::newRow("secure address")
        << "https://h/x"
        << "https://h/x" << std::optional<QString>("https://h/x.iso") << "https://h/x.iso";
    QTest::newRow("other clipboard text not offered") << "hola"
                                                      << "" << cancel << "";
    QTest::newRow("capital scheme refused") << ""
                                            << "" << std::optional<QString>("HTTP://h/x") << "";
    QTest::newRow("dots above the host refused")
        << ""
        << "" << std::optional<QString>("http://h/../../x") << "";
}

void TestQuickAdd::newurlAnswers()
{
    QFETCH(QString, clipboard);
    QFETCH(QString, offered);
    QFETCH(std::optional<QString>, answer);
    QFETCH(QString, added);
    EngineFixture f;
    f.desktop.inputAnswers = {answer};
    QuickAdd quick(f.active, f.inactive, f.settings, f.desktop, f.history);

    const QString path = quick.newurl(clipboard);

    QCOMPARE(f.desktop.calls.first(), "inputBox|Escriba aquí la dirección del archivo|" + offered);
    QCOMPARE(path.isEmpty(), added.isEmpty());
    QCOMPARE(f.active.rowCount(), added.isEmpty() ? 1 : 2);
    if (!added.isEmpty()) {
        QCOMPARE(f.active.slotAt(1).Data, added);
        QCOMPARE(f.history.lines, QStringList{"\r\nDescargando " + added + " a " + path});
    } else if (answer) {
        QCOMPARE(f.desktop.callsOf("messageBox"),
                 QStringList{"Critical|Debe escribir una dirección web correcta (debe empezar "
                             "por http:// o ftp://)"});
    }
}

void TestQuickAdd::newurlLoginAndFullQueue()
{
    EngineFixture f;
    QuickAdd quick(f.active, f.inactive, f.settings, f.desktop, f.history);
    f.desktop.inputAnswers = {QStringLiteral("ftp://127.0.0.1:9/pub/f.bin")};
    f.desktop.loginAnswers = {FtpCredentials{"ana", "secreta", true}};
    QVERIFY(!quick.newurl({}).isEmpty());
    QCOMPARE(f.desktop.callsOf("askFtpLogin"), QStringList{"Usuario/Contraseña|anonymous|freepwd"});
    const DownloadSlot &slot = f.active.slotAt(1);
    QCOMPARE(slot.usernm, QStringLiteral("ana"));
    QCOMPARE(slot.passw, QStringLiteral("secreta"));
    QVERIFY(slot.rememb);

    // Active list and queue both full: nothing is added and no line is logged.
    f.settings.maxdesc = "1";
    for (int i = 1; i <= 39; ++i)
        f.inactive.addnew("http://h/x", "/x", 0, 0, false, 0, true, "", "", false, false);
    f.desktop.inputAnswers = {QStringLiteral("http://127.0.0.1:9/g")};
    QVERIFY(quick.newurl({}).isEmpty());
    QCOMPARE(f.desktop.callsOf("messageBox"),
             QStringList{"Critical|Ya se ha alcanzado el máximo posible de descargas en cola."});
    QCOMPARE(f.history.lines.size(), 1);
}

QTEST_GUILESS_MAIN(TestQuickAdd)
#include "tst_quickadd.moc"
