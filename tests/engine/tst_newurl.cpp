#include "enginefixture.h"
#include "newurl.h"

#include <QTest>

class TestNewUrl : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void answers_data();
    void answers();
    void ftpLoginAndFullQueue();
};

void TestNewUrl::answers_data()
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

void TestNewUrl::answers()
{
    QFETCH(QString, clipboard);
    QFETCH(QString, offered);
    QFETCH(std::optional<QString>, answer);
    QFETCH(QString, added);
    EngineFixture f;
    f.desktop.inputAnswers = {answer};
    NewUrl newurl({f.active, f.inactive, f.settings, f.desktop, f.history});

    const QString path = newurl.run(clipboard);

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

void TestNewUrl::ftpLoginAndFullQueue()
{
    EngineFixture f;
    NewUrl newurl({f.active, f.inactive, f.settings, f.desktop, f.history});
    f.desktop.inputAnswers = {QStringLiteral("ftp://127.0.0.1:9/pub/f.bin")};
    f.desktop.loginAnswers = {FtpCredentials{"ana", "secreta", true}};
    QVERIFY(!newurl.run({}).isEmpty());
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
    QVERIFY(newurl.run({}).isEmpty());
    QCOMPARE(f.desktop.callsOf("messageBox"),
             QStringList{"Critical|Ya se ha alcanzado el máximo posible de descargas en cola."});
    QCOMPARE(f.history.lines.size(), 1);
}

QTEST_GUILESS_MAIN(TestNewUrl)
#include "tst_newurl.moc"
