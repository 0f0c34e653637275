#include "failure.h"
#include "quicklist.h"
#include "recentdownloads.h"
#include "viewswitches.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace {

QByteArray booleans(std::initializer_list<int> values)
{
    QByteArray bytes;
    for (int value : values) {
        bytes += char(value & 0xFF);
        bytes += char((value >> 8) & 0xFF);
    }
    return bytes;
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestMainFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void viewSwitches_data();
    void viewSwitches();
    void viewSwitchesUnreadable();
    void quickList();
    void recentDownloads();
};

void TestMainFiles::viewSwitches_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QList<bool>>("on");
    QTest::newRow("empty: all off") << QByteArray() << QList<bool>(7, false);
    QTest::newRow("short: the rest off")
        << booleans({-1, 0, -1}) << QList<bool>{true, false, true, false, false, false, false};
    QTest::newRow("odd byte ignored")
        << booleans({-1}) + QByteArray(1, '\xff')
        << QList<bool>{true, false, false, false, false, false, false};
    QTest::newRow("full") << booleans({0, -1, 0, -1, 0, -1, 0})
                          << QList<bool>{false, true, false, true, false, true, false};
    QTest::newRow("any non-zero is true, extra bytes ignored")
        << booleans({1, 256, 0, 0, 0, 0, 0, -1})
        << QList<bool>{true, true, false, false, false, false, false};
}

void TestMainFiles::viewSwitches()
{
    QFETCH(QByteArray, file);
    QFETCH(QList<bool>, on);
    QTemporaryDir dir;
    const QString path = dir.filePath("view.win");
    writeFile(path, file);

    const ViewSwitches switches = ViewSwitches::read(path);
    for (int i = 0; i < ViewSwitches::Count; ++i)
        QCOMPARE(switches.on(ViewSwitches::Switch(i)), on[i]);

    // Written back as exactly seven 16-bit values, 0 or -1.
    switches.write(path);
    QByteArray expected;
    for (bool value : on)
        expected += booleans({value ? -1 : 0});
    QCOMPARE(readFile(path), expected);
}

void TestMainFiles::viewSwitchesUnreadable()
{
    QTemporaryDir dir;
    QVERIFY_THROWS_EXCEPTION(Failure, ViewSwitches::read(dir.filePath("missing")));
    // A folder where the file should be cannot be read, nor replaced.
    QVERIFY(QDir(dir.path()).mkdir("view.win"));
    QVERIFY_THROWS_EXCEPTION(Failure, ViewSwitches::read(dir.filePath("view.win")));
    QVERIFY_THROWS_EXCEPTION(Failure, ViewSwitches().write(dir.filePath("view.win")));

    const ViewSwitches first = ViewSwitches::firstStart();
    QList<bool> shown;
    for (int i = 0; i < ViewSwitches::Count; ++i)
        shown << first.on(ViewSwitches::Switch(i));
    QCOMPARE(shown, (QList<bool>{false, false, true, true, false, true, true}));
}

void TestMainFiles::quickList()
{
    QTemporaryDir dir;
    const QString path = dir.filePath("quick.lst");
    writeFile(path, "http://a/1\r\n\r\nftp://b/2\nhttp://c/3");
    QuickList list;
    list.load(path);
    QCOMPARE(list.items(), (QStringList{"http://a/1", "", "ftp://b/2", "http://c/3"}));

    // This run's addresses go first, in the order added; one already there is not added again.
    list.record("http://n/1");
    list.record("http://n/2");
    list.record("ftp://b/2");
    QCOMPARE(list.items(), (QStringList{"http://n/1", "http://n/2", "http://a/1", "", "ftp://b/2",
                                        "http://c/3"}));

    list.save(path);
    QCOMPARE(readFile(path),
             QByteArray("http://n/1\r\nhttp://n/2\r\nhttp://a/1\r\n\r\nftp://b/2\r\n"
                        "http://c/3\r\n"));
    QuickList empty;
    empty.save(path);
    QCOMPARE(readFile(path), QByteArray());
    QVERIFY_THROWS_EXCEPTION(Failure, empty.load(dir.filePath("missing.lst")));
}

void TestMainFiles::recentDownloads()
{
    RecentDownloads recent;
    for (int i = 1; i <= 9; ++i)
        recent.add(QString("/d/%1").arg(i));
    QCOMPARE(recent.paths(), (QStringList{"/d/9", "/d/8", "/d/7", "/d/6", "/d/5", "/d/4", "/d/3"}));
    recent.add("/d/5");
    QCOMPARE(recent.paths().first(), QStringLiteral("/d/5"));
    QCOMPARE(recent.paths().size(), 7);
    QCOMPARE(recent.paths().count("/d/5"), 1);
}

QTEST_GUILESS_MAIN(TestMainFiles)
#include "tst_mainfiles.moc"
