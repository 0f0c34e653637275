#include "fakedesktop.h"
#include "mainactions.h"
#include "mainwindow.h"
#include "program.h"

#include <QAction>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QToolBar>

namespace {

QByteArray booleans(const QList<bool> &values)
{
    QByteArray bytes;
    for (bool value : values)
        bytes += value ? QByteArray("\xff\xff", 2) : QByteArray(2, '\0');
    return bytes;
}

// A program folder with a settings file, so that starting asks nothing.
struct Home
{
    QTemporaryDir dir;
    Home()
    {
        write("corvane.ini",
              dir.filePath("download").toUtf8() +
                  "\r\n 1 \r\n 0 \r\n 0 \r\n\r\n5\r\n5\r\n 0 \r\n 0 \r\n 1 \r\n10\r\n10"
                  "\r\n 1 \r\nFalse\r\nTrue\r\nFalse\r\nTrue\r\nFalse\r\n 0 \r\n" +
                  dir.filePath("historial.rtf").toUtf8() + "\r\n 10 \r\n");
    }
    QString path(const QString &name) const { return dir.filePath(name); }
    void write(const QString &name, const QByteArray &bytes) const
    {
        QFile file(path(name));
        if (file.open(QIODevice::WriteOnly))
            file.write(bytes);
    }
    QByteArray read(const QString &name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
};

// The windows and bars in the order of "view.win", as shown.
QList<bool> shown(MainWindow &main)
{
    QList<bool> result;
    for (int i = 0; i < ViewSwitches::general; ++i)
        result << !main.child(ViewSwitches::Switch(i))->isHidden();
    result << !main.actions().barra()->isHidden();
    result << !main.findChild<QToolBar *>("quickbar")->isHidden();
    return result;
}

QList<bool> checks(MainWindow &main)
{
    QList<bool> result;
    for (const char *name : {"viewweb", "viewhist", "viewactivas", "viewinactivas",
                             "viewestadisticas", "general", "viequickadd"})
        result << main.actions()[name]->isChecked();
    return result;
}

} // namespace

class TestStartup : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void viewSwitches_data();
    void viewSwitches();
    void quickAddBar();
    void startupError();
};

void TestStartup::viewSwitches_data()
{
    QTest::addColumn<QByteArray>("file"); // "none": no file at all
    QTest::addColumn<QList<bool>>("on");
    QTest::newRow("first start") << QByteArray("none")
                                 << QList<bool>{false, false, true, true, false, true, true};
    QTest::newRow("empty file: nothing shown") << QByteArray() << QList<bool>(7, false);
    QTest::newRow("short file") << booleans({false, true, true})
                                << QList<bool>{false, true, true, false, false, false, false};
    QTest::newRow("full file") << booleans({false, true, false, true, true, false, true})
                               << QList<bool>{false, true, false, true, true, false, true};
}

void TestStartup::viewSwitches()
{
    QFETCH(QByteArray, file);
    QFETCH(QList<bool>, on);
    // setup
    Home home;
    if (file != "none")
        home.write("view.win", file);
    FakeDesktop desktop;
    Program program(ProgramFolder(home.dir.path()), {}, desktop);

    // action
    program.start();
    QTRY_VERIFY(program.mainWindow() && program.mainWindow()->isVisible());
    MainWindow &main = *program.mainWindow();

    // verify: the windows follow the file, and the menu's checks follow the windows both ways
    QCOMPARE(shown(main), on);
    QCOMPARE(checks(main), on);
    main.actions()["viewestadisticas"]->trigger();
    QCOMPARE(main.child(ViewSwitches::viewestadisticas)->isHidden(), on[4]);
    main.child(ViewSwitches::viewhist)->close();
    QVERIFY(!main.actions()["viewhist"]->isChecked());
    QVERIFY(desktop.callsOf("messageBox").isEmpty());

    // Leaving writes the switches as they stand, and the other files.
    main.close();
    on[4] = !on[4];
    on[1] = false;
    QCOMPARE(home.read("view.win"), booleans(on));
    QVERIFY(QFile::exists(home.path("quick.lst")));
    QVERIFY(home.read("historial.rtf").contains("Cerrado a las "));
}

void TestStartup::quickAddBar()
{
    Home home;
    home.write("quick.lst", "http://a/1\r\n\r\nftp://b/2\r\n");
    FakeDesktop desktop;
    Program program(ProgramFolder(home.dir.path()), {}, desktop);
    program.start();
    QTRY_VERIFY(program.mainWindow() && program.mainWindow()->isVisible());
    QComboBox *quickadd = program.mainWindow()->quickadd();
    QCOMPARE(quickadd->count(), 3);

    // Enter in the box adds what it holds, records it first in its list and empties it.
    QTest::keyClicks(quickadd->lineEdit(), "http://127.0.0.1:9/nuevo.zip");
    QTest::keyClick(quickadd->lineEdit(), Qt::Key_Return);
    QCOMPARE(quickadd->currentText(), QString());
    QCOMPARE(quickadd->itemText(0), QStringLiteral("http://127.0.0.1:9/nuevo.zip"));
    QVERIFY(QFile::exists(home.path("activas.dwn")));

    // A refused address stays in the box and is not recorded.
    QTest::keyClicks(quickadd->lineEdit(), "HTTP://127.0.0.1:9/x");
    QTest::mouseClick(program.mainWindow()->addquick(), Qt::LeftButton);
    QCOMPARE(quickadd->currentText(), QStringLiteral("HTTP://127.0.0.1:9/x"));
    QCOMPARE(quickadd->count(), 4);
    QCOMPARE(desktop.callsOf("messageBox").size(), 1);

    program.mainWindow()->close();
    QCOMPARE(home.read("quick.lst"),
             QByteArray("http://127.0.0.1:9/nuevo.zip\r\nhttp://a/1\r\n\r\nftp://b/2\r\n"));
}

void TestStartup::startupError()
{
    // A "view.win" that cannot be read stops the start-up there: "quick.lst" is not read.
    Home home;
    QVERIFY(QDir(home.dir.path()).mkdir("view.win"));
    home.write("quick.lst", "http://a/1\r\n");
    FakeDesktop desktop;
    Program program(ProgramFolder(home.dir.path()), {}, desktop);
    program.start();
    QTRY_VERIFY(program.mainWindow() && program.mainWindow()->isVisible());
    const QStringList boxes = desktop.callsOf("messageBox");
    QCOMPARE(boxes.size(), 1);
    QVERIFY2(boxes.first().startsWith("Critical|Error al iniciar Corvane:\n"),
             qPrintable(boxes.first()));
    QCOMPARE(program.mainWindow()->quickadd()->count(), 0);
}

QTEST_MAIN(TestStartup)
#include "tst_startup.moc"
