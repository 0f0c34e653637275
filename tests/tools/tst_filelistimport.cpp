#include "../engine/enginefixture.h"
#include "filelistwindow.h"

#include <QDir>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QStringListModel>
#include <QTest>
#include <QTimer>

namespace {

// The import window over both lists, a fresh program folder and the scripted desktop.
struct ImportFixture : EngineFixture
{
    FileListWindow window{active, inactive, settings, desktop};
    FileListImport &model = window.model();

    template <typename T> T *child(const QString &name)
    {
        auto *found = window.findChild<T *>(name);
        if (!found)
            qFatal("no control %s", qPrintable(name));
        return found;
    }
    void click(const QString &name) { QTest::mouseClick(child<QPushButton>(name), Qt::LeftButton); }
    QStringList shown(const QString &list)
    {
        return static_cast<QStringListModel *>(child<QListView>(list)->model())->stringList();
    }
    // Chooses a list file of that content in the open dialog of `loadlist`.
    void load(const QByteArray &content)
    {
        write("lista.txt", content);
        desktop.fileAnswers = {path("lista.txt")};
        QVERIFY(model.loadlist());
        window.show();
    }
};

} // namespace

class TestFileListImport : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pairwiseReading_data();
    void pairwiseReading();
    void loadlist();
    void badFiles_data();
    void badFiles();
    void moving();
    void addtolist_data();
    void addtolist();
    void bothListsFull();
};

void TestFileListImport::pairwiseReading_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("url");
    QTest::addColumn<QStringList>("names");

    QTest::newRow("one item a line")
        << QByteArray("lista\r\nhttp://h/d\r\n1\r\na.zip\r\n2\r\nb.zip\r\n") << "http://h/d"
        << QStringList{"a.zip", "b.zip"};
    QTest::newRow("commas") << QByteArray("lista,http://h/d,1,a.zip,2,b.zip") << "http://h/d"
                            << QStringList{"a.zip", "b.zip"};
    QTest::newRow("pairs on a line") << QByteArray("lista,http://h/d\n1,a.zip\n2,b.zip\n")
                                     << "http://h/d" << QStringList{"a.zip", "b.zip"};
    QTest::newRow("odd last item dropped")
        << QByteArray("lista,http://h/d,1,a.zip,2") << "http://h/d" << QStringList{"a.zip"};
    QTest::newRow("quoted items keep their commas")
        << QByteArray("\"lista\",\"http://h/d\",\"1\",\"a, b.zip\"") << "http://h/d"
        << QStringList{"a, b.zip"};
    QTest::newRow("address only") << QByteArray("lista\r\nhttp://h/d\r\n") << "http://h/d"
                                  << QStringList{};
}

void TestFileListImport::pairwiseReading()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, url);
    QFETCH(QStringList, names);

    const ListFile list = readListFile(content);
    QCOMPARE(list.url, url);
    QCOMPARE(list.names, names);
    QVERIFY(!list.failure);
}

void TestFileListImport::loadlist()
{
    ImportFixture f;
    f.settings.defdir = "/srv/bajadas/";

    // Cancelling the dialog does nothing.
    QVERIFY(!f.model.loadlist());
    QCOMPARE(f.desktop.calls, QStringList{"openFileDialog|/srv/bajadas/|"});

    // The menu entry: the chosen file is read, then the window shown modally.
    f.write("lista.txt", "lista,http://h/d,1,a.zip,2,b.zip");
    f.desktop.fileAnswers = {f.path("lista.txt")};
    bool modal = false;
    QTimer::singleShot(0, &f.window, [&] {
        modal = f.window.isVisible() && f.window.isModal();
        f.window.close();
    });
    f.window.loadlist();
    QVERIFY(modal);
    QCOMPARE(f.window.objectName(), "oldsupport");
    QCOMPARE(f.window.windowTitle(), "Listado de archivos");
    QCOMPARE(f.child<QLineEdit>("url")->text(), "http://h/d");
    QCOMPARE(f.shown("si"), (QStringList{"a.zip", "b.zip"}));
    QCOMPARE(f.child<QLineEdit>("destdir")->text(), "/srv/bajadas/");

    // A second list replaces the first.
    f.load("otra,http://o/,1,c.zip");
    QCOMPARE(f.shown("si"), QStringList{"c.zip"});
    QVERIFY(f.shown("no").isEmpty());
}

void TestFileListImport::badFiles_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("url");

    QTest::newRow("empty") << QByteArray() << "";
    QTest::newRow("one item") << QByteArray("lista\r\n") << "";
}

void TestFileListImport::badFiles()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, url);
    ImportFixture f;

    f.load(content);

    QCOMPARE(f.desktop.callsOf("messageBox"),
             QStringList{"Critical|Se ha sobrepasado el final del archivo"});
    QCOMPARE(f.child<QLineEdit>("url")->text(), url);
    QVERIFY(f.shown("si").isEmpty());
}

void TestFileListImport::moving()
{
    ImportFixture f;
    f.load("lista,http://h/d,1,a.zip,2,b.zip");

    f.child<QListView>("si")->setCurrentIndex(f.child<QListView>("si")->model()->index(0, 0));
    f.click("tono");
    QCOMPARE(f.shown("si"), QStringList{"b.zip"});
    QCOMPARE(f.shown("no"), QStringList{"a.zip"});
    f.child<QListView>("no")->setCurrentIndex(f.child<QListView>("no")->model()->index(0, 0));
    f.click("tosi");
    QCOMPARE(f.shown("si"), (QStringList{"b.zip", "a.zip"}));
    f.click("tosi");
    QCOMPARE(f.shown("si"), (QStringList{"b.zip", "a.zip"}));

    f.desktop.fileAnswers = {"/srv/otra"};
    f.click("brdir");
    QCOMPARE(f.child<QLineEdit>("destdir")->text(), "/srv/otra");
}

void TestFileListImport::addtolist_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("first");

    QTest::newRow("base without its slash") << "http://h/d"
                                            << "http://h/d/a.zip";
    QTest::newRow("base with its slash") << "http://h/d/"
                                         << "http://h/d/a.zip";
}

void TestFileListImport::addtolist()
{
    QFETCH(QString, url);
    QFETCH(QString, first);
    ImportFixture f;
    f.settings.maxdescval = 1;
    f.settings.defdir = f.dir.path() + QDir::separator();
    f.load("lista," + url.toUtf8() + ",1,a.zip,2,b.zip");

    f.click("addtolist");

    QVERIFY(!f.window.isVisible());
    QCOMPARE(f.active.rowCount(), 2);
    QCOMPARE(f.active.slotAt(1).Data, first);
    QCOMPARE(f.active.slotAt(1).path, f.path("a.zip"));
    QCOMPARE(f.active.slotAt(1).usernm, "anonymous");
    QCOMPARE(f.active.slotAt(1).passw, "freepwd");
    QVERIFY(f.active.slotAt(1).allowredo);
    // The active list is full: the next one waits.
    QCOMPARE(f.inactive.rowCount(), 2);
    QCOMPARE(f.inactive.registro(1).Data, "http://h/d/b.zip");
    QCOMPARE(f.inactive.registro(1).path, f.path("b.zip"));
    QVERIFY(!f.inactive.registro(1).locked);
    QVERIFY(f.desktop.callsOf("messageBox").isEmpty());
}

void TestFileListImport::bothListsFull()
{
    ImportFixture f;
    f.settings.maxdescval = 1;
    for (int i = 0; i < SlotCount - 2; ++i)
        f.inactive.addnew("http://h/q.zip", "/tmp/q.zip", 0, 0, true, 0, true, "", "", false,
                          false);
    f.load("lista,http://h/d,1,a.zip,2,b.zip,3,c.zip,4,d.zip");

    f.click("addtolist");

    // One runs, one fills the queue, the other two are told about once each.
    QCOMPARE(f.active.rowCount(), 2);
    QCOMPARE(f.inactive.rowCount(), SlotCount);
    QCOMPARE(f.inactive.registro(SlotCount - 1).Data, "http://h/d/b.zip");
    QCOMPARE(f.desktop.callsOf("messageBox"),
             QStringList(2, "Critical|Se ha alcanzado el límite de descargas"));
}

QTEST_MAIN(TestFileListImport)
#include "tst_filelistimport.moc"
