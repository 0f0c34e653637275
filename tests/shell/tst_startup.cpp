#include "commandline.h"
#include "mainactions.h"
#include "mainwindow.h"
#include "program.h"
#include "recentdownloads.h"
#include "scriptedhttpserver.h"
#include "settingsfixture.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>
#include <QToolBar>

namespace {

// Seven 16-bit little-endian values, as "view.win" holds them.
QByteArray words(const QList<int> &values)
{
    QByteArray bytes;
    for (int value : values)
        bytes.append(char(value & 0xFF)).append(char((value >> 8) & 0xFF));
    return bytes;
}

// The program started over the fixture's folder, its main window up.
struct Started : SettingsFixture
{
    std::unique_ptr<Program> program;
    MainWindow *main = nullptr;
    void start()
    {
        QVERIFY(saveQuiet());
        program = std::make_unique<Program>(ProgramFolder(dir.path()), QStringList(), desktop);
        program->start();
        QTRY_VERIFY(program->mainWindow() && program->mainWindow()->isVisible());
        main = program->mainWindow();
    }
    // The windows and bars in the order of "view.win", as shown.
    QList<bool> shown() const
    {
        QList<bool> result;
        for (int i = 0; i < ViewSwitches::general; ++i)
            result << !main->child(ViewSwitches::Switch(i))->isHidden();
        return result << !main->actions().barra()->isHidden()
                      << !main->findChild<QToolBar *>("quickbar")->isHidden();
    }
};

} // namespace

class TestStartup : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void viewSwitches_data()
    {
        QTest::addColumn<QByteArray>("file"); // "none": no file at all
        QTest::addColumn<QList<bool>>("on");  // the browser off: its engine is not for here
        const bool T = true, F = false;
        QTest::newRow("first start: the bars and both lists")
            << QByteArray("none") << QList<bool>{F, F, T, T, F, T, T};
        QTest::newRow("any non-zero is on, extra bytes ignored")
            << words({0, 1, 256, 0, 0, 0, 0, -1}) << QList<bool>{F, T, T, F, F, F, F};
    }

    void viewSwitches()
    {
        QFETCH(QByteArray, file);
        QFETCH(QList<bool>, on);
        Started f;
        if (file != "none")
            f.write("view.win", file);

        f.start();

        // The windows follow the file, and the menu's checks follow the windows both ways.
        QCOMPARE(f.shown(), on);
        f.main->actions()["viewestadisticas"]->trigger();
        QCOMPARE(f.main->child(ViewSwitches::viewestadisticas)->isHidden(), on[4]);
        f.main->child(ViewSwitches::viewhist)->close();
        QVERIFY(!f.main->actions()["viewhist"]->isChecked());
        QCOMPARE(f.desktop.callsOf("messageBox"), QStringList());

        // Leaving writes the switches as they stand, 0 or -1 each, an empty quick-add list too.
        f.main->close();
        on[4] = !on[4];
        on[1] = false;
        QList<int> values;
        for (bool value : on)
            values << (value ? -1 : 0);
        QCOMPARE(f.read("view.win"), words(values));
        QVERIFY(QFile::exists(f.path("quick.lst")));
    }

    void quickAddBar()
    {
        Started f;
        f.write("quick.lst", "http://127.0.0.1:9/viejo.zip\r\n\r\nftp://b/2\nhttp://c/3");
        f.start();
        QComboBox *quickadd = f.main->quickadd();
        QCOMPARE(quickadd->count(), 4);

        // Enter adds what the box holds and empties it; this run's addresses go first in the list,
        // in the order added, and one already there is not listed again.
        for (const char *url : {"http://127.0.0.1:9/nuevo.zip", "http://127.0.0.1:9/otro.zip",
                                "http://127.0.0.1:9/viejo.zip"}) {
            QTest::keyClicks(quickadd->lineEdit(), url);
            QTest::keyClick(quickadd->lineEdit(), Qt::Key_Return);
            QCOMPARE(quickadd->currentText(), QString());
        }
        QCOMPARE(quickadd->itemText(0), QStringLiteral("http://127.0.0.1:9/nuevo.zip"));
        QCOMPARE(QString(f.read("activas.dwn")).count("http://127.0.0.1:9/"), 3);

        // A refused address stays in the box and is not listed.
        QTest::keyClicks(quickadd->lineEdit(), "HTTP://127.0.0.1:9/x");
        QTest::mouseClick(f.main->addquick(), Qt::LeftButton);
        QCOMPARE(quickadd->currentText(), QStringLiteral("HTTP://127.0.0.1:9/x"));
        QCOMPARE(quickadd->count(), 6);
        QCOMPARE(f.desktop.callsOf("messageBox").size(), 1);

        f.main->close();
        QCOMPARE(f.read("quick.lst"),
                 QByteArray("http://127.0.0.1:9/nuevo.zip\r\nhttp://127.0.0.1:9/otro.zip\r\n"
                            "http://127.0.0.1:9/viejo.zip\r\n\r\nftp://b/2\r\nhttp://c/3\r\n"));
    }

    void downloadCount()
    {
        // A server that sends "hecho" whole and keeps "lento" waiting half way; the panel tells
        // running downloads / all downloads after every change.
        Started f;
        f.start();
        ScriptedHttpServer server([](const QByteArray &request, int) {
            HttpReply reply = ScriptedHttpServer::file("contenido", request, true);
            if (!request.startsWith("GET /hecho")) {
                reply.bytes.chop(4);
                reply.stall = true;
            }
            return reply;
        });
        const QLabel *descargas = f.main->findChild<QLabel *>("descargas");
        const auto add = [&](const QString &name) {
            QTest::keyClicks(f.main->quickadd()->lineEdit(), server.url(name));
            QTest::keyClick(f.main->quickadd()->lineEdit(), Qt::Key_Return);
        };
        QCOMPARE(descargas->text(), QStringLiteral("0/0"));
        add("lento");
        QCOMPARE(descargas->text(), QStringLiteral("1/1"));
        add("hecho");
        QTRY_COMPARE(descargas->text(), QStringLiteral("1/2")); // finished, still listed
        f.desktop.yesNoAnswers = {true};
        f.main->actions()["pauseall"]->trigger();
        QCOMPARE(descargas->text(), QStringLiteral("0/2"));
        f.main->actions()["contall"]->trigger();
        QTRY_COMPARE(descargas->text(), QStringLiteral("1/2"));
        f.main->close();
    }

    // The four windows of the lists, the history and the graph, arranged as at the start and from
    // the Ventana menu, in the main window maximised on a screen of 1280 x 720 (1920 x 1080 at a
    // scale of 1.5) and in one too small for all: no sideways scrolling, no window over another,
    // each inside the area and the lists with the room their contents need; when that is not
    // there, the area scrolls down.
    void arrangedWindows_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<bool>("fits");
        QTest::newRow("1280 x 720") << QSize(1280, 690) << true;
        QTest::newRow("too small") << QSize(640, 480) << false;
    }
    void arrangedWindows()
    {
        QFETCH(QSize, size);
        QFETCH(bool, fits);
        Started f;
        f.write("view.win", words({0, -1, -1, -1, -1, -1, -1}));
        f.start();
        f.main->resize(size);
        QTRY_COMPARE(f.main->size(), size);
        const QMdiArea *mdi = f.main->mdi();
        for (const char *how : {"", "mhorz", "mvert"}) {
            if (*how)
                f.main->actions()[how]->trigger();
            else
                f.main->arrange();
            QApplication::processEvents();
            QVERIFY2(!mdi->horizontalScrollBar()->isVisible(), how);
            QCOMPARE(mdi->verticalScrollBar()->isVisible(), !fits);
            QList<QRect> places;
            for (const QMdiSubWindow *sub : mdi->subWindowList())
                if (sub->isVisible())
                    places << sub->geometry();
            for (const QRect &place : places) {
                QVERIFY2(!fits || mdi->viewport()->rect().contains(place), how);
                QCOMPARE(std::count_if(places.begin(), places.end(),
                                       [&](const QRect &other) { return other.intersects(place); }),
                         1);
            }
            for (const auto list : {ViewSwitches::viewactivas, ViewSwitches::viewinactivas}) {
                const QMdiSubWindow *sub = f.main->child(list);
                QVERIFY2(sub->width() >= sub->minimumSizeHint().width() &&
                             sub->height() >=
                                 sub->layout()->totalMinimumHeightForWidth(sub->width()),
                         how);
            }
        }
        f.main->close();
    }

    // A "view.win" that cannot be read stops the start-up there: "quick.lst" is not read, so it is
    // not replaced on the way out either. One that cannot be written at the end does not keep the
    // quick-add list from being saved.
    void viewFileFailures_data()
    {
        QTest::addColumn<bool>("atStart");
        QTest::addColumn<QByteArray>("quick");
        QTest::newRow("unreadable at the start") << true << QByteArray("http://a/1\r\n");
        QTest::newRow("unwritable at the end")
            << false << QByteArray("http://127.0.0.1:9/b\r\nhttp://a/1\r\n");
    }
    void viewFileFailures()
    {
        QFETCH(bool, atStart);
        Started f;
        QVERIFY(!atStart || QDir(f.dir.path()).mkdir("view.win"));
        f.write("quick.lst", "http://a/1\r\n");
        f.start();
        QCOMPARE(f.main->quickadd()->count(), atStart ? 0 : 1);
        if (!atStart) {
            QFile::remove(f.path("view.win"));
            QVERIFY(QDir(f.dir.path()).mkdir("view.win"));
            QTest::keyClicks(f.main->quickadd()->lineEdit(), "http://127.0.0.1:9/b");
            QTest::keyClick(f.main->quickadd()->lineEdit(), Qt::Key_Return);
        }
        f.main->close();
        const QStringList boxes = f.desktop.callsOf("messageBox");
        QCOMPARE(boxes.size(), atStart ? 2 : 1);
        QVERIFY2(boxes.first().startsWith(atStart ? "Critical|Error al iniciar Corvane:\n"
                                                  : "Critical|"),
                 qPrintable(boxes.first()));
        QVERIFY(boxes.last().startsWith("Critical|"));
        QTEST(f.read("quick.lst"), "quick");
    }

    void recentDownloads()
    {
        // The `ultimas` menu: the last seven finished downloads, newest first, each once.
        RecentDownloads recent;
        for (int i = 1; i <= 9; ++i)
            recent.add(QString("/d/%1").arg(i));
        recent.add("/d/5");
        QCOMPARE(recent.paths(),
                 (QStringList{"/d/5", "/d/9", "/d/8", "/d/7", "/d/6", "/d/4", "/d/3"}));
    }

    // The program folder, where msg/ is read, and where downloads go while the settings name no
    // folder: never in the hidden per-user folder. Below a root whose "bin" holds the program.
    void folders_data()
    {
        QTest::addColumn<bool>("installed");
        QTest::addColumn<QString>("home");
        QTest::addColumn<QStringList>("chosen");
        QTest::newRow("build folder") << false << "" << QStringList{"bin", "bin", "bin/download"};
        QTest::newRow("installed")
            << true << "" << QStringList{"user", "share/corvane", "Descargas"};
        QTest::newRow("installed, --home")
            << true << "home" << QStringList{"home", "share/corvane", "home/download"};
    }
    void folders()
    {
        QFETCH(bool, installed);
        QFETCH(QString, home);
        QFETCH(QStringList, chosen);
        QTemporaryDir root;
        QVERIFY(QDir().mkpath(root.filePath("bin")));
        if (installed)
            QVERIFY(QDir().mkpath(root.filePath("share/corvane/msg")));
        CommandLine command;
        command.home = home.isEmpty() ? home : root.filePath(home);
        const ProgramFolder folder = programFolderFor(
            command, root.filePath("bin"), {root.filePath("user"), root.filePath("Descargas/")});
        QCOMPARE(folder.dir(), root.filePath(chosen[0]));
        QCOMPARE(folder.dataFile("msg"), root.filePath(chosen[1] + "/msg"));
        QCOMPARE(folder.downloadDir(), root.filePath(chosen[2]));
    }
};

QTEST_MAIN(TestStartup)
#include "tst_startup.moc"
