#include "fakedesktop.h"
#include "folderwindow.h"
#include "qtdesktop.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QTreeView>

class TestFolderChooser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void newfolder_data();
    void newfolder();
    void drives();
    void closing();
    void browsing();
    void desktopReusesOneWindow();
};

void TestFolderChooser::newfolder_data()
{
    QTest::addColumn<QString>("in");
    QTest::addColumn<std::optional<QString>>("answer");
    QTest::addColumn<QString>("made");
    QTest::addColumn<QString>("message");

    const std::optional<QString> cancelled;
    QTest::newRow("in the chosen folder") << "a" << std::optional<QString>("nueva") << "a/nueva"
                                          << "";
    QTest::newRow("chosen folder ending in a separator")
        << "a/" << std::optional<QString>("nueva") << "a/nueva"
        << "";
    QTest::newRow("cancelled") << "a" << cancelled << ""
                               << "";
    QTest::newRow("empty name") << "a" << std::optional<QString>("") << ""
                                << "";
    QTest::newRow("already there") << "a" << std::optional<QString>("b") << ""
                                   << "Error al crear la carpeta: File exists";
    QTest::newRow("name with a separator")
        << "a" << std::optional<QString>("b/c") << ""
        << "Error al crear la carpeta: el nombre no puede contener «/»";
    QTest::newRow("chosen folder gone") << "gone" << std::optional<QString>("x") << ""
                                        << "Error al crear la carpeta: No such file or directory";
}

void TestFolderChooser::newfolder()
{
    QFETCH(QString, in);
    QFETCH(std::optional<QString>, answer);
    QFETCH(QString, made);
    QFETCH(QString, message);
    QTemporaryDir root;
    QVERIFY(QDir(root.path()).mkpath("a/b"));
    FakeDesktop desktop;
    desktop.inputAnswers = {answer};
    FolderChooser chooser(desktop, [] { return false; });
    chooser.setPath(root.filePath(in));

    const QString result = chooser.newfolder();

    QCOMPARE(desktop.callsOf("inputBox"),
             QStringList{"Escriba el nombre de la nueva carpeta||Nueva Carpeta"});
    QCOMPARE(result, made.isEmpty() ? QString() : root.filePath(made));
    if (!made.isEmpty())
        QVERIFY(QFileInfo(result).isDir());
    QCOMPARE(desktop.callsOf("messageBox"),
             message.isEmpty() ? QStringList() : QStringList{"Critical|" + message});
    QCOMPARE(QDir(root.filePath("a")).entryList(QDir::Dirs | QDir::NoDotAndDotDot),
             made.isEmpty() ? QStringList{"b"} : QStringList({"b", "nueva"}));
}

void TestFolderChooser::drives()
{
    const QList<FolderChooser::Drive> drives = FolderChooser::drives();
    QVERIFY(!drives.isEmpty());
    QCOMPARE(drives.first().root, QDir::homePath());
    for (const FolderChooser::Drive &drive : drives)
        QVERIFY2(QFileInfo(drive.root).isDir(), qPrintable(drive.root));

    // A drive that cannot be read leaves the choice where it was.
    FakeDesktop desktop;
    FolderChooser chooser(desktop, [] { return false; });
    QVERIFY(!chooser.setDrive("/no/such/drive"));
    QCOMPARE(chooser.path(), QDir::homePath());
}

void TestFolderChooser::closing()
{
    FakeDesktop desktop;
    bool ending = false;
    FolderWindow window(desktop, [&] { return ending; });
    QCOMPARE(window.objectName(), "folder");
    QCOMPARE(window.windowTitle(), "Seleccionar carpeta");
    window.show();

    // The close box and Escape are refused while the program runs.
    QVERIFY(!window.close());
    QTest::keyClick(&window, Qt::Key_Escape);
    QVERIFY(window.isVisible());

    // "Aceptar" hides it; the caller then reads the path.
    window.findChild<QPushButton *>("acept")->click();
    QVERIFY(!window.isVisible());
    QCOMPARE(window.result(), int(QDialog::Accepted));

    window.show();
    ending = true;
    QVERIFY(window.close());
}

void TestFolderChooser::browsing()
{
    QTemporaryDir root;
    QVERIFY(QDir(root.path()).mkpath("a/b"));
    FakeDesktop desktop;
    FolderWindow window(desktop, [] { return false; });
    window.show();
    auto *tree = window.findChild<QTreeView *>("dir");

    // The caller's folder is shown; something that is no folder leaves the choice alone.
    window.goTo(root.filePath("a"));
    window.goTo(root.filePath("nothing"));
    QCOMPARE(window.path(), root.filePath("a"));
    QCOMPARE(window.findChild<QLabel *>("ruta")->text(), root.filePath("a"));

    // A folder picked in the tree is the result.
    const QModelIndex a = tree->currentIndex();
    tree->expand(a);
    QTRY_COMPARE(tree->model()->rowCount(a), 1);
    tree->setCurrentIndex(tree->model()->index(0, 0, a));
    QCOMPARE(window.path(), root.filePath("a/b"));

    // Choosing a drive goes to its top.
    auto *drive = window.findChild<QComboBox *>("drive");
    Q_EMIT drive->activated(0);
    QCOMPARE(window.path(), QDir::homePath());
}

void TestFolderChooser::desktopReusesOneWindow()
{
    QTemporaryDir root;
    QtDesktop desktop{ProgramFolder(root.path())};
    bool ending = false;
    desktop.setGetunload([&] { return ending; });
    QList<FolderWindow *> seen;
    const auto acceptWhenShown = [&] {
        QTimer::singleShot(0, [&] {
            auto *window = qobject_cast<FolderWindow *>(QApplication::activeModalWidget());
            QVERIFY(window);
            seen.append(window);
            window->findChild<QPushButton *>("acept")->click();
        });
    };

    acceptWhenShown();
    QCOMPARE(desktop.chooseFolder(root.path()), root.path());
    acceptWhenShown();
    QCOMPARE(desktop.chooseFolder(QDir::homePath()), QDir::homePath());
    QCOMPARE(seen.size(), 2);
    QCOMPARE(seen[0], seen[1]);

    // At the end of the program its close box works, and the chooser counts as cancelled.
    ending = true;
    QTimer::singleShot(0, [&] { QApplication::activeModalWidget()->close(); });
    QCOMPARE(desktop.chooseFolder(root.path()), QString());
    QPointer<FolderWindow> window = seen[0];
    desktop.unloadFolder();
    QVERIFY(window.isNull());
}

QTEST_MAIN(TestFolderChooser)
#include "tst_folderchooser.moc"
