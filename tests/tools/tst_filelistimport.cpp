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

    template <typename T> T *child(const QString &name) { return window.findChild<T *>(name); }
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
    void reading_data();
    void reading();
    void loadlist();
    void addtolist_data();
    void addtolist();
    void bothListsFull();
};

void TestFileListImport::reading_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("url");
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<bool>("complete");

    const QStringList ab{"a.zip", "b.zip"};
    QTest::newRow("an item a line") << QByteArray("l\r\nhttp://h/d\r\n1\r\na.zip\r\n2\r\nb.zip\r\n")
                                    << "http://h/d" << ab << true;
    QTest::newRow("commas") << QByteArray("l,http://h/d,1,a.zip,2,b.zip") << "http://h/d" << ab
                            << true;
    QTest::newRow("pairs a line") << QByteArray("l,http://h/d\n1,a.zip\n2,b.zip\n") << "http://h/d"
                                  << ab << true;
    QTest::newRow("odd last item dropped")
        << QByteArray("l,http://h/d,1,a.zip,2") << "http://h/d" << QStringList{"a.zip"} << true;
    QTest::newRow("quoted items keep their commas")
        << QByteArray("\"l\",\"http://h/d\",\"1\",\"a, b.zip\"") << "http://h/d"
        << QStringList{"a, b.zip"} << true;
    QTest::newRow("address only") << QByteArray("l\r\nhttp://h/d\r\n") << "http://h/d"
                                  << QStringList{} << true;
    QTest::newRow("one item") << QByteArray("l\r\n") << "" << QStringList{} << false;
    QTest::newRow("empty") << QByteArray() << "" << QStringList{} << false;
}

void TestFileListImport::reading()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, url);
    QFETCH(QStringList, names);
    QFETCH(bool, complete);
    ImportFixture f;

    f.load(content);

    QCOMPARE(f.child<QLineEdit>("url")->text(), url);
    QCOMPARE(f.shown("si"), names);
    // A file that ends too soon is reported; what was read of it stays.
    QCOMPARE(f.desktop.callsOf("messageBox"),
             complete ? QStringList{}
                      : QStringList{"Critical|Se ha sobrepasado el final del archivo"});
}

void TestFileListImport::loadlist()
{
    ImportFixture f;
    f.settings.defdir = "/srv/bajadas/";

    // Cancelling the dialog does nothing.
    QVERIFY(!f.model.loadlist());
    QCOMPARE(f.desktop.calls, QStringList{"openFileDialog|/srv/bajadas/|"});

    // The menu entry: the chosen file is read, then the window shown modally.
    f.write("lista.txt", "l,http://h/d,1,a.zip,2,b.zip");
    f.desktop.fileAnswers = {f.path("lista.txt")};
    bool modal = false;
    QTimer::singleShot(0, &f.window, [&] {
        modal = f.window.isVisible() && f.window.isModal();
        f.window.close();
    });
    f.window.loadlist();
    QVERIFY(modal);
    QCOMPARE(f.window.windowTitle(), "Listado de archivos");
    QCOMPARE(f.child<QLineEdit>("destdir")->text(), "/srv/bajadas/");

    // Moving a name, then loading another list, which starts afresh.
    f.child<QListView>("si")->setCurrentIndex(f.child<QListView>("si")->model()->index(0, 0));
    f.click("tono");
    QCOMPARE(f.shown("no"), QStringList{"a.zip"});
    f.load("l,http://o/,1,c.zip");
    QCOMPARE(f.shown("si"), QStringList{"c.zip"});
    QVERIFY(f.shown("no").isEmpty());
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
    QCOMPARE(f.active.slotAt(1).usernm + "/" + f.active.slotAt(1).passw, "anonymous/freepwd");
    // The active list is full: the next one waits.
    QCOMPARE(f.inactive.rowCount(), 2);
    QCOMPARE(f.inactive.registro(1).Data, "http://h/d/b.zip");
    QCOMPARE(f.inactive.registro(1).path, f.path("b.zip"));
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
