#include "alldownloads.h"
#include "enginefixture.h"

#include <QTest>

namespace {

// Three downloads running and two queued, each with a partial file.
void fill(EngineFixture &f)
{
    for (const char *name : {"a1", "a2", "a3"}) {
        f.write(name, "part");
        f.active.addnew(QStringLiteral("http://127.0.0.1:9/") + name, f.path(name), 0, 0, false, 0,
                        true, "", "", false);
    }
    for (const char *name : {"i1", "i2"}) {
        f.write(name, "part");
        f.inactive.addnew(QStringLiteral("http://127.0.0.1:9/") + name, f.path(name), 100, 4, true,
                          0, false, "", "", false, false);
    }
}

} // namespace

class TestAllDownloads : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void commands_data();
    void commands();
    void contallStopsWhenActiveFull();
};

void TestAllDownloads::commands_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<bool>("yes");
    QTest::addColumn<int>("active");   // rows left, template included
    QTest::addColumn<int>("inactive"); // rows left, template included
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QString>("logged");
    const QStringList all{"a1", "a2", "a3", "i1", "i2"};
    for (const char *command : {"detall", "detact", "detinactivas", "pauseall"})
        QTest::addRow("%s, No", command) << command << false << 4 << 3 << all << "";
    QTest::newRow("detall") << "detall" << true << 1 << 1 << QStringList()
                            << "Canceladas TODAS las descargas a las ";
    QTest::newRow("detact") << "detact" << true << 1 << 3 << QStringList{"i1", "i2"}
                            << "Canceladas TODAS LAS DESCARGAS ACTIVAS a las ";
    QTest::newRow("detinactivas") << "detinactivas" << true << 4 << 1
                                  << QStringList{"a1", "a2", "a3"}
                                  << "Canceladas TODAS LAS DESCARGAS INACTIVAS a las ";
    QTest::newRow("pauseall keeps the files") << "pauseall" << true << 1 << 6 << all << "";
    QTest::newRow("contall asks nothing") << "contall" << false << 6 << 1 << all << "";
}

void TestAllDownloads::commands()
{
    QFETCH(QString, command);
    QFETCH(bool, yes);
    QFETCH(int, active);
    QFETCH(int, inactive);
    QFETCH(QStringList, files);
    QFETCH(QString, logged);
    EngineFixture f;
    fill(f);
    f.desktop.yesNoAnswers = {yes};
    AllDownloads all(f.active, f.inactive, f.desktop, f.history);
    const QHash<QString, void (AllDownloads::*)()> commands{
        {"detall", &AllDownloads::detall},
        {"detact", &AllDownloads::detact},
        {"detinactivas", &AllDownloads::detinactivas},
        {"pauseall", &AllDownloads::pauseall},
        {"contall", &AllDownloads::contall}};
    f.settings.maxdescval = 40;

    (all.*commands.value(command))();

    QCOMPARE(f.desktop.callsOf("askYesNo").size(), command == "contall" ? 0 : 1);
    QCOMPARE(f.active.rowCount(), active);
    QCOMPARE(f.inactive.rowCount(), inactive);
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
    QCOMPARE(f.read("inactivas.dwn").count("http://"), inactive - 1);
}

void TestAllDownloads::contallStopsWhenActiveFull()
{
    EngineFixture f;
    fill(f);
    f.settings.maxdescval = 5; // four run at once, the template row counted
    AllDownloads all(f.active, f.inactive, f.desktop, f.history);
    all.contall();
    QCOMPARE(f.active.rowCount(), 5);
    QCOMPARE(f.inactive.rowCount(), 2);
    QVERIFY(f.inactive.existe(2));
}

QTEST_GUILESS_MAIN(TestAllDownloads)
#include "tst_alldownloads.moc"
