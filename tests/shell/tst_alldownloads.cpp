#include "alldownloads.h"
#include "enginefixture.h"

#include <QTest>

class TestAllDownloads : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void commands_data();
    void commands();
};

void TestAllDownloads::commands_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<bool>("yes");
    QTest::addColumn<int>("maxdesc");
    QTest::addColumn<QList<int>>("rows"); // left in the active and inactive lists, templates too
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QString>("logged");
    const QStringList all{"a1", "a2", "a3", "i1", "i2"};
    QTest::newRow("detall, No") << "detall" << false << 40 << QList{4, 3} << all << "";
    QTest::newRow("detall") << "detall" << true << 40 << QList{1, 1} << QStringList()
                            << "Canceladas TODAS las descargas a las ";
    QTest::newRow("detact") << "detact" << true << 40 << QList{1, 3} << QStringList{"i1", "i2"}
                            << "Canceladas TODAS LAS DESCARGAS ACTIVAS a las ";
    QTest::newRow("detinactivas") << "detinactivas" << true << 40 << QList{4, 1}
                                  << QStringList{"a1", "a2", "a3"}
                                  << "Canceladas TODAS LAS DESCARGAS INACTIVAS a las ";
    QTest::newRow("pauseall keeps the files")
        << "pauseall" << true << 40 << QList{1, 6} << all << "";
    // Four run at once, the template row counted: one stays queued.
    QTest::newRow("contall until the active list is full")
        << "contall" << false << 5 << QList{5, 2} << all << "";
}

void TestAllDownloads::commands()
{
    QFETCH(QString, command);
    QFETCH(QList<int>, rows);
    QFETCH(QStringList, files);
    QFETCH(QString, logged);
    QFETCH(bool, yes);
    QFETCH(int, maxdesc);
    EngineFixture f;
    // Three downloads running and two queued, each with a partial file.
    for (const char *name : {"a1", "a2", "a3", "i1", "i2"}) {
        f.write(name, "part");
        const QString url = QStringLiteral("http://127.0.0.1:9/") + name;
        if (name[0] == 'a')
            f.active.addnew({.Data = url, .path = f.path(name)}, Loading::Yes);
        else
            f.inactive.addnew({.Data = url, .path = f.path(name), .total = 100, .bytes = 4});
    }
    f.desktop.yesNoAnswers = {yes};
    f.settings.maxdescval = maxdesc;
    AllDownloads all(f.active, f.inactive, f.desktop, f.history);
    const QHash<QString, void (AllDownloads::*)()> commands{
        {"detall", &AllDownloads::detall},
        {"detact", &AllDownloads::detact},
        {"detinactivas", &AllDownloads::detinactivas},
        {"pauseall", &AllDownloads::pauseall},
        {"contall", &AllDownloads::contall}};

    (all.*commands.value(command))();

    QCOMPARE(f.desktop.callsOf("askYesNo").size(), command == "contall" ? 0 : 1);
    QCOMPARE((QList{f.active.rowCount(), f.inactive.rowCount()}), rows);
    QStringList left;
    for (const char *name : {"a1", "a2", "a3", "i1", "i2"}) {
        if (QFile::exists(f.path(name)))
            left << name;
    }
    QCOMPARE(left, files);
    QCOMPARE(f.history.lines.size(), logged.isEmpty() ? 0 : 1);
    if (!logged.isEmpty())
        QVERIFY2(f.history.lines.first().startsWith("\r\n" + logged),
                 qPrintable(f.history.lines.first()));
    // What moved between the lists is in both list files.
    QCOMPARE(f.read("inactivas.dwn").count("http://"), rows[1] - 1);
}

QTEST_GUILESS_MAIN(TestAllDownloads)
#include "tst_alldownloads.moc"
