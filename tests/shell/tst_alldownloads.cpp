#include "alldownloads.h"
#include "enginefixture.h"

#include <QDir>
#include <QTest>

// The commands on all downloads, over three running and two queued, each with a partial file.
class TestAllDownloads : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void commands_data()
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

    void commands()
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

QTEST_GUILESS_MAIN(TestAllDownloads)
#include "tst_alldownloads.moc"
