// Start-up: the settings file and its window, the windows and bars shown, the quick-add list,
// the program folder.
#include "cfgwindow.h"
#include "commandline.h"
#include "mainactions.h"
#include "mainwindow.h"
#include "program.h"
#include "recentdownloads.h"
#include "scriptedhttpserver.h"
#include "settingsfixture.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QListWidget>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSpinBox>
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

// Every setting as "name=value", so a table row names only the values it is about.
struct Text
{
    static QString of(int value) { return QString::number(value); }
    static QString of(const QString &text) { return text; }
    static QString of(const QStringList &list) { return list.join('|'); }
};
QMap<QString, QString> describe(const Settings &s)
{
#define FIELD(name) std::pair<QString, QString>(#name, Text::of(s.name))
    return {FIELD(defdir),    FIELD(initstart), FIELD(showmsg), FIELD(exevirus),   FIELD(virus),
            FIELD(segs),      FIELD(segsv),     FIELD(veces),   FIELD(vecesv),     FIELD(delinc),
            FIELD(dellista),  FIELD(autocont),  FIELD(maxdesc), FIELD(maxdescval), FIELD(wait),
            FIELD(waitv),     FIELD(checkact),  FIELD(autoact), FIELD(notact),     FIELD(msgno),
            FIELD(msgdialog), FIELD(msgsys),    FIELD(wavs),    FIELD(histrut),    FIELD(histsize),
            FIELD(hsizet),    FIELD(ext)};
#undef FIELD
}

// A complete file whose values are easy to tell from the built-in ones where it matters.
QStringList fullFile()
{
    return QString("/srv/bajadas/| 1 | 0 | 0 ||5|5| 0 | 0 | 1 |10|10| 1 |False|True|False|True|"
                   "False| 1 |/srv/historial.rtf| 10 ")
        .split('|');
}

QStringList edited(std::initializer_list<std::pair<int, QString>> lines)
{
    QStringList file = fullFile();
    for (const auto &[number, text] : lines)
        file[number - 1] = text;
    return file;
}

const QString DefaultExt = ".zip|.exe|.cab|.tar|.ace|.com|.arj|.doc|.vb|.vbs|.gz|.js|.pif";

// The settings window over a fresh program folder; controls are found by name.
struct WindowFixture : SettingsFixture
{
    CfgWindow window{model, desktop};

    template <typename T> T *child(const QString &name) { return window.findChild<T *>(name); }
    void click(const QString &name) { child<QPushButton>(name)->click(); }
    QStringList ext()
    {
        QStringList texts;
        for (auto *list = child<QListWidget>("ext"); texts.size() < list->count();)
            texts.append(list->item(texts.size())->text());
        return texts;
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

    // The built-in values byte for byte; a folder that cannot be written is said, and writing
    // stops there, so the folder default is not applied either.
    void writing_data()
    {
        QTest::addColumn<QString>("subfolder");
        QTest::newRow("defaults") << QString();
        QTest::newRow("no such folder") << "no/such/folder";
    }
    void writing()
    {
        QFETCH(QString, subfolder);
        SettingsFixture f(subfolder);
        f.model.setText(&Settings::defdir, ""); // kept empty in the file, the default once written
        const bool written = subfolder.isEmpty();
        QCOMPARE(f.model.save(), written);
        QCOMPARE(f.history.lines.size(), 1);
        QCOMPARE(f.model.settings().defdir, written ? f.folder() + "/download/" : QString());
        if (!written) {
            QCOMPARE(f.desktop.calls.size(), 1);
            QVERIFY(f.desktop.calls[0].startsWith("messageBox|Critical|"));
            return;
        }
        QVERIFY(f.desktop.calls.isEmpty());
        QCOMPARE(f.read("corvane.ini"),
                 "\r\n 1 \r\n 0 \r\n 0 \r\n\r\n5\r\n5\r\n 0 \r\n 0 \r\n 1 \r\n10\r\n10\r\n 1 \r\n"
                 "False\r\nTrue\r\nFalse\r\nTrue\r\nFalse\r\n 1 \r\n" +
                     f.folder().toUtf8() +
                     "/historial.rtf\r\n 10 \r\n.zip\r\n.exe\r\n.cab\r\n.tar\r\n.ace\r\n.com\r\n"
                     ".arj\r\n.doc\r\n.vb\r\n.vbs\r\n.gz\r\n.js\r\n.pif\r\n");
        // What that layout has no line for goes in a file of named keys.
        QCOMPARE(f.read("preferencias.ini"),
                 "[General]\nconexiones=4\nlimitar=false\nlimite=0\nportapapeles=false\n");
    }

    void reading_data()
    {
        QTest::addColumn<QStringList>("lines");    // none: no file at all
        QTest::addColumn<QStringList>("expected"); // "name=value"; %DIR% is the program folder
        QTest::addColumn<QString>("message");      // the one critical message, empty for none
        const auto row = [](const char *name, const QStringList &lines, const QStringList &expected,
                            const QString &message = {}) {
            QTest::newRow(name) << lines << expected << message;
        };
        // A first start: the built-in values, written down at once, without a word.
        row("missing file", {},
            {"defdir=%DIR%/download/", "histrut=%DIR%/historial.rtf", "segsv=5", "initstart=1",
             "ext=" + DefaultExt});
        row("21 lines leave ext empty", fullFile(),
            {"defdir=/srv/bajadas/", "histrut=/srv/historial.rtf", "ext="});
        // The comma ends the field; what follows it is the next value and everything shifts.
        row("comma in segs", edited({{6, "12,5"}}),
            {"segs=12", "segsv=12", "veces=5", "vecesv=5", "delinc=0"},
            "Valor no válido en corvane.ini: \"5\" no es 0 ni 1 en una casilla");
        row("truncated keeps what was read", edited({{2, " 0 "}, {6, "30"}}).mid(0, 12),
            {"defdir=/srv/bajadas/", "initstart=0", "segsv=30", "waitv=10",
             "histrut=%DIR%/historial.rtf", "ext=" + DefaultExt},
            "Se ha sobrepasado el final del archivo");
        row("garbled option", edited({{14, "True"}, {15, "Quizás"}, {16, "True"}}),
            {"autoact=1", "notact=0", "msgno=0", "msgdialog=1"},
            "No coinciden los tipos: \"Quizás\" no es un valor lógico");
        row("spin out of range", edited({{7, "70"}, {8, " 1 "}}),
            {"veces=70", "vecesv=5", "delinc=0"},
            "Valor no válido en corvane.ini: 70 está fuera del intervalo de 0 a 50");
    }

    void reading()
    {
        QFETCH(QStringList, lines);
        QFETCH(QStringList, expected);
        QFETCH(QString, message);
        SettingsFixture f;
        if (!lines.isEmpty())
            f.write("corvane.ini", (lines.join("\r\n") + "\r\n").toUtf8());
        QSignalSpy changed(&f.model, &SettingsModel::changed);
        QCOMPARE(f.model.load(), message.isEmpty());
        QCOMPARE(f.desktop.calls,
                 message.isEmpty() ? QStringList() : QStringList{"messageBox|Critical|" + message});
        QCOMPARE(changed.count(), 1);
        QVERIFY(QFile::exists(f.path("corvane.ini")));
        const QMap<QString, QString> actual = describe(f.model.settings());
        for (QString item : expected) {
            item.replace("%DIR%", f.folder());
            const QString name = item.section('=', 0, 0);
            QCOMPARE(name + '=' + actual.value(name), item);
        }
    }

    // A value not yes or no in the file of named keys: said, the main file left as it was.
    void extraFile()
    {
        SettingsFixture f;
        QVERIFY(f.model.save());
        f.write("preferencias.ini", "[General]\nlimite=-3\nportapapeles=quizá\nlimitar=true\n");
        const QByteArray main = f.read("corvane.ini");
        QVERIFY(!f.model.load());
        // The first bad value is told; the good ones are read all the same.
        QVERIFY(!f.model.extra().portapapeles);
        QCOMPARE(f.model.extra().speedLimit(), 0);
        QVERIFY(f.model.extra().limitar);
        QCOMPARE(f.desktop.callsOf("messageBox"),
                 QStringList{
                     "Critical|Valor no válido en preferencias.ini: \"quizá\" para portapapeles"});
        QCOMPARE(f.model.settings().ext, DefaultExt.split('|'));
        QCOMPARE(f.read("corvane.ini"), main);
    }

    void closing_data()
    {
        QTest::addColumn<QString>("button");
        QTest::newRow("Cancelar restores") << "cancel";
        QTest::newRow("Aceptar writes") << "acept";
    }

    void closing()
    {
        QFETCH(QString, button);
        WindowFixture f;
        QVERIFY(f.model.save());
        f.history.lines.clear();
        f.window.show();
        const QMap<QString, QString> saved = describe(f.model.settings());

        // Every kind of control edited.
        f.child<QLineEdit>("defdir")->setText("/srv/a, b/");
        QTest::keyClicks(f.child<QLineEdit>("virus"), "/usr/bin/clam scan");
        f.child<QSpinBox>("segsv")->setValue(42);
        QCOMPARE(f.child<QLineEdit>("segs")->text(), "42");
        f.child<QLineEdit>("veces")->setText("7");
        QVERIFY(!f.child<QCheckBox>("portapapeles")->isChecked());
        f.child<QCheckBox>("portapapeles")->click();
        f.child<QCheckBox>("limitar")->click();
        f.child<QSpinBox>("limite")->setValue(500);
        f.child<QRadioButton>("msgno")->click();
        f.desktop.inputAnswers = {QString(".exe"), std::nullopt, QString("iso")};
        for (int i = 0; i < 3; ++i)
            f.click("add");
        f.child<QListWidget>("ext")->setCurrentRow(1);
        f.click("del");
        // Added as typed, duplicates kept; a cancelled answer adds nothing.
        QStringList ext = DefaultExt.split('|') + QStringList{".exe", "iso"};
        ext.removeAt(1);
        QCOMPARE(f.ext(), ext);
        QMap<QString, QString> edited = describe(f.model.settings());

        f.click(button);

        QVERIFY(!f.window.isVisible());
        const Settings &s = f.model.settings();
        QCOMPARE(describe(s), button == "cancel" ? saved : edited);
        // The controls show what is kept.
        QCOMPARE(f.child<QCheckBox>("portapapeles")->isChecked(), button == "acept");
        QCOMPARE(f.model.extra().speedLimit(), button == "acept" ? 500 : 0);
        QCOMPARE(f.ext(), s.ext);
        // Read back, the file gives what was kept; the text boxes are what it holds, and their spin
        // boxes follow them on reading.
        SettingsModel read(ProgramFolder(f.dir.path()), f.desktop, f.history);
        QVERIFY(read.load());
        edited["vecesv"] = "7";
        QCOMPARE(describe(read.settings()), button == "cancel" ? saved : edited);
        QCOMPARE(read.extra().portapapeles, button == "acept");
        QCOMPARE(f.history.lines.size(), button == "cancel" ? 0 : 1);
        QCOMPARE(f.desktop.callsOf("messageBox"), QStringList());
    }
};

QTEST_MAIN(TestStartup)
#include "tst_startup.moc"
