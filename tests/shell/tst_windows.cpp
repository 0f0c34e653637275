// The windows: the two lists', the detail window and the graph; the main window as the program
// starts, with the settings file and its window, the windows and bars shown, the quick-add list and
// the program folder.
#include "../engine/enginefixture.h"
#include "activewindow.h"
#include "cfgwindow.h"
#include "commandline.h"
#include "detailwindow.h"
#include "download.h"
#include "graphmodel.h"
#include "inactivewindow.h"
#include "mainactions.h"
#include "mainwindow.h"
#include "program.h"
#include "recentdownloads.h"
#include "rowframe.h"
#include "scriptedhttpserver.h"
#include "settingsfixture.h"
#include "tarta.h"
#include "transfer.h"
#include "wincolor.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFileInfo>
#include <QGroupBox>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QListWidget>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMimeData>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>
#include <QToolBar>
#include <QToolButton>

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

// Both list windows over the engine's lists, shown (offscreen), with their shared detail window.
// The windows go before the lists.
struct Views : EngineFixture
{
    DetailWindow detail;
    ActiveWindow activas{active, detail};
    InactiveWindow inactivas{inactive, active, detail};

    Views()
    {
        // A finished download pulls no queued one into its place.
        settings.autocont = 0;
        activas.show();
        inactivas.show();
    }

    // Answers by the first folder of the address: "exhausted" refuses the file, "running" and
    // "unresumable" send the head of a 1000-byte file (206 and 200) and then nothing, and
    // "finishing" the rest of it a moment later.
    ScriptedHttpServer server{[](const QByteArray &request, int) {
        const QByteArray path = request.mid(5, request.indexOf(' ', 5) - 5);
        if (path.startsWith("exhausted/"))
            return ScriptedHttpServer::status("HTTP/1.1 404 Not Found");
        HttpReply reply =
            HttpReply::of(path.startsWith("unresumable/")
                              ? "HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n"
                              : "HTTP/1.1 206 Partial Content\r\nContent-Length: 995\r\n\r\n");
        reply.stall = !path.startsWith("finishing/");
        if (!reply.stall) {
            reply.chunks = {std::exchange(reply.bytes, {}), QByteArray(995, 'x')};
            reply.gapMs = 300;
        }
        return reply;
    }};

    // An active download of 1000 bytes with 5 on disk, in that state once it returns (a
    // running one once its head has come); "finished" is complete from the start, no state is
    // still connecting (to nowhere).
    int addActive(const QString &name, const QString &state = {})
    {
        write(name, "parte");
        const bool done = state == "finished";
        const bool running = !done && !state.isEmpty() && state != "exhausted";
        const qint64 total = done ? 5 : running ? 0 : 1000;
        const int i =
            active.addnew({.Data = state.isEmpty() || done ? "http://127.0.0.1:9/" + name
                                                           : server.url(state + '/' + name),
                           .path = path(name),
                           .total = total,
                           .bytes = done ? 5 : 6,
                           .allowredo = true});
        const auto reached = [&] {
            const DownloadSlot &slot = active.slot(i);
            return done              ? slot.status == DownloadStatus::Finished
                   : running         ? slot.total == 1000
                   : state.isEmpty() ? slot.status == DownloadStatus::Connecting
                                     : slot.status == DownloadStatus::Exhausted;
        };
        if (!QTest::qWaitFor(reached))
            qWarning("%s never became %s", qPrintable(name), qPrintable(state));
        return i;
    }

    void addInactive(const QString &name, bool locked = false)
    {
        write(name, "parte");
        inactive.addnew({.Data = "http://127.0.0.1:9/" + name,
                         .path = path(name),
                         .total = 100,
                         .bytes = 5,
                         .tiempo = 3,
                         .allowredo = true,
                         .locked = locked});
    }

    // The rows both windows show, by file name, "activas | inactivas": the selected one in
    // brackets, a locked one marked "*".
    QString rows() const
    {
        QStringList lists;
        for (const bool inactive : {false, true}) {
            QStringList names;
            for (int i = 1; i < SlotCount; ++i) {
                if (const download *row = inactive ? inactivas.rowAt(i) : activas.rowAt(i)) {
                    const QString name =
                        QFileInfo(row->archivo()).fileName() + (row->locked() ? "*" : "");
                    names << (row->selected() ? "[" + name + "]" : name);
                }
            }
            lists << names.join(' ');
        }
        return lists.join(" | ");
    }

    // With "~/" for the folder of the files and "T" for the time of day.
    QStringList tidy(QStringList lines) const
    {
        return lines.replaceInStrings(dir.path() + "/", "~/")
            .replaceInStrings(server.url({}), "http://servidor/")
            .replaceInStrings(QRegularExpression("\\d\\d:\\d\\d:\\d\\d"), "T");
    }
};

QToolButton *button(QWidget *window, const QString &key)
{
    return window->findChild<QToolButton *>(key);
}

void clickRow(download *row, Qt::MouseButton button = Qt::LeftButton)
{
    QTest::mouseClick(row->findChild<QLabel *>("filename"), button);
}

QStringList texts(QWidget *window, const QStringList &fields)
{
    QStringList shown;
    for (const QString &field : fields)
        shown << window->findChild<QLineEdit *>(field)->text();
    return shown;
}

QStringList enabledItems(const QMenu *menu)
{
    QStringList names;
    for (const QAction *item : menu->actions())
        names << (item->isEnabled() ? item->objectName() : QString());
    names.removeAll(QString()); // the disabled ones
    return names;
}

} // namespace

class TestWindows : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // A screen reader names every toolbar button by its tooltip and every field by its label.
    void accessibleNames()
    {
        Views f;
        for (QWidget *window :
             std::initializer_list<QWidget *>{&f.activas, &f.inactivas, &f.detail}) {
            QVERIFY(!window->windowTitle().isEmpty());
            for (QToolButton *button : window->findChildren<QToolButton *>()) {
                // The bar's overflow arrow has a name of its own.
                const bool more = button->objectName() == "qt_toolbar_ext_button";
                if (button->parent()->objectName() == "opciones")
                    QVERIFY2(!button->accessibleName().isEmpty() &&
                                 (more || (button->defaultAction() && !button->icon().isNull() &&
                                           button->accessibleName() == button->toolTip())),
                             qPrintable(button->objectName()));
            }
            QList<QWidget *> named;
            for (QLabel *label : window->findChildren<QLabel *>())
                named << label->buddy();
            for (QLineEdit *field : window->findChildren<QLineEdit *>())
                QVERIFY2(named.contains(field), qPrintable(field->objectName()));
        }
    }

    // A right click selects a row and opens the window's menu, enabled like the toolbar; its last
    // item describes the download. The download goes while the menu is open: the items follow.
    void rightClickMenu()
    {
        Views f;
        f.addActive("uno", "finished");
        f.addInactive("dos", true);
        for (const bool inactive : {false, true}) {
            QMenu *menu = inactive ? f.inactivas.menu2() : f.activas.menu();
            clickRow(inactive ? f.inactivas.rowAt(1) : f.activas.rowAt(1), Qt::RightButton);
            QTRY_VERIFY(menu->isVisible());
            QCOMPARE(f.rows(), inactive ? " | [dos*]" : "[uno] | dos*");
            QCOMPARE(enabledItems(menu),
                     (inactive ? QStringList{"continuar2", "cancelar2", "bloquear", "propiedades2"}
                               : QStringList{"ejecutar", "antivirus", "propiedades"}));
            menu->actions().last()->trigger();
            QCOMPARE(texts(&f.detail, {"destino"}), QStringList{f.path(inactive ? "dos" : "uno")});
            inactive ? f.inactive.delfile(1, false) : f.active.delfile(1, false);
            QCOMPARE(enabledItems(menu), QStringList());
            menu->hide();
        }
        QCOMPARE(f.rows(), QStringLiteral(" | "));
    }

    void commands_data()
    {
        QTest::addColumn<QString>("select"); // the row clicked first: "uno" is active, "dos" and
        QTest::addColumn<QString>("state");  // "tres" inactive
        QTest::addColumn<QString>("key");
        QTest::addColumn<bool>("yes");          // the answer to a question; No when not given
        QTest::addColumn<QString>("meanwhile"); // what happens while the question is open
        QTest::addColumn<QString>("rows");
        QTest::addColumn<QString>("files");
        QTest::addColumn<QStringList>("history");
        QTest::addColumn<QStringList>("calls");
        const auto row = [](const char *name, const char *select, const char *state,
                            const char *key, bool yes, const char *rows, const QStringList &history,
                            const QStringList &calls, const char *files = "dos tres uno",
                            const char *meanwhile = "") {
            QTest::newRow(name) << select << state << key << yes << meanwhile << rows << files
                                << history << calls;
        };
        const QString ask = "askYesNo|¿Seguro que desea cancelar la transferencia de ~/%1?";
        const QStringList warn{"askYesNo|Advertencia: Este servidor no soporta la reanudación de "
                               "descargas, así que empezará de cero la próxima vez. ¿Desea "
                               "pausar la descarga de todas formas?"};
        const QStringList paused{"\r\nPausada la descarga de ~/uno a las T cuando llevaba "
                                 "descargado 6 bytes"};
        const QStringList cancelled{"\r\nCancelada la descarga de ~/uno a las T"};
        // The toolbar of the active window.
        row("cancel, yes", "uno", "running", "detener", true, " | dos tres", cancelled,
            {ask.arg("uno")}, "dos tres");
        row("pause, resumable", "uno", "running", "pausar", false, " | dos tres uno", paused, {});
        // A 200 sends the file from its first byte again: none of it is there yet.
        row("pause, not resumable, yes", "uno", "unresumable", "pausar", true, " | dos tres uno",
            {QString(paused[0]).replace("6 bytes", "1 bytes")}, warn);
        row("open, finished", "uno", "finished", "open", false, "[uno] | dos tres",
            {"\r\nEjecutado el archivo ~/uno a las T"}, {"openFile|~/uno"});
        // The answer comes after the download changed: it acts on what the slot holds then. A
        // download that ends while it is asked about is still the one that was asked about.
        row("cancel, finished meanwhile", "uno", "finishing", "detener", true, " | dos tres",
            QStringList{"\r\nLa descarga de http://servidor/finishing/uno a ~/uno ha finalizado "
                        "tras 0 segundos."} +
                cancelled,
            {ask.arg("uno")}, "dos tres", "finish");
        row("cancel, replaced meanwhile", "uno", "running", "detener", true, "otra | dos tres", {},
            {ask.arg("uno")}, "dos otra tres uno", "replace");
        // The toolbar of the inactive window; with one download active, the list is full at two.
        row("inactive cancel, yes", "tres", "", "detener", true, "uno | dos",
            {"Cancelada la descarga de ~/tres a las T"}, {ask.arg("tres")}, "dos uno");
        row("continue, active list full", "tres", "", "continuar", false, "uno | dos [tres]", {},
            {"messageBox|Critical|Ya hay activas el número máximo configurado."});
        row("lock", "tres", "", "bloquear", false, "uno | dos [tres*]", {}, {});
    }

    // Each toolbar button as a person presses it: what both windows list afterwards, the files,
    // the questions and messages, the history lines.
    void commands()
    {
        QFETCH(QString, select);
        QFETCH(QString, key);
        QFETCH(QString, meanwhile);
        Views f;
        f.settings.maxdescval =
            QTest::currentDataTag() == QLatin1String("continue, active list full") ? 2 : 10;
        QFETCH(QString, state);
        f.addActive("uno", state);
        f.addInactive("dos");
        f.addInactive("tres");
        QWidget *window = select == "uno" ? static_cast<QWidget *>(&f.activas) : &f.inactivas;
        clickRow(select == "uno" ? f.activas.rowAt(1) : f.inactivas.rowAt(2));
        f.desktop.calls.clear();
        QFETCH(bool, yes);
        f.desktop.yesNoAnswers = {yes};
        f.desktop.whileAsking = [&] {
            if (meanwhile == "finish") {
                QTRY_COMPARE(f.status(1), DownloadStatus::Finished);
            } else if (!meanwhile.isEmpty()) {
                f.active.delfile(1, false);
                if (meanwhile == "replace")
                    f.addActive("otra");
            }
        };
        // A disabled button cannot be pressed; the command behind it must refuse too.
        if (button(window, key)->isEnabled())
            button(window, key)->click();
        else
            button(window, key)->defaultAction()->trigger();

        QTEST(f.rows(), "rows");
        QTEST(QDir(f.dir.path()).entryList({"uno", "dos", "tres", "otra"}).join(' '), "files");
        QTEST(f.tidy(f.desktop.calls), "calls");
        QTEST(f.tidy(f.history.lines), "history");
        QCOMPARE(button(&f.inactivas, "detener")->isEnabled(), f.inactive.seleccionado() != 0);
    }

    // A click selects the row and describes it; the menu and the buttons follow the download's
    // state. "continuar" fetches a file the server refused once again, with the whole retry
    // budget. A click on the empty part of the list clears the selection and the panel. The
    // finished downloads leave, the selected one among them; their files stay, and the row left
    // moves up under the column headers.
    void rowClickAndReconnect()
    {
        Views f;
        const QByteArray content = randomBytes(50000);
        ScriptedHttpServer server([&](const QByteArray &request, int index) {
            return index == 0 ? ScriptedHttpServer::status("HTTP/1.1 404 Not Found")
                              : ScriptedHttpServer::file(content, request, true);
        });
        f.addActive("uno", "finished");
        f.addActive("otra");
        f.add(server.url("f.bin"));
        QTRY_COMPARE(f.status(3), DownloadStatus::Exhausted);
        clickRow(f.activas.rowAt(2));
        clickRow(f.activas.rowAt(3));
        QCOMPARE(f.rows(), QStringLiteral("uno otra [f.bin] | "));
        QCOMPARE(enabledItems(f.activas.menu()),
                 (QStringList{"continuar", "pausar", "cancelar", "propiedades"}));
        const QStringList buttons = {"continuar", "pausar", "detener", "open", "antivirus"};
        for (int k = 0; k < buttons.size(); ++k)
            QCOMPARE(button(&f.activas, buttons[k])->isEnabled(),
                     f.activas.menu()->actions()[k]->isEnabled());
        QCOMPARE(f.activas.findChild<QGroupBox *>("inf")->title(),
                 "Información detallada de " + f.path("f.bin"));
        QCOMPARE(texts(&f.activas, {"urlt", "velmedia", "tiempou"}),
                 (QStringList{server.url("f.bin"), "0 Kb/seg", "0:00:00"}));

        f.settings.vecesv = 7;
        button(&f.activas, "continuar")->click();
        QVERIFY(!button(&f.activas, "continuar")->isEnabled());
        QCOMPARE(f.transfer(3).redoBudget(), 7);
        QTRY_COMPARE(f.status(3), DownloadStatus::Finished);
        QCOMPARE(f.read("f.bin"), content);
        // Finished while selected: the buttons and the panel follow.
        QVERIFY(button(&f.activas, "open")->isEnabled());
        QTRY_COMPARE(texts(&f.activas, {"bytest", "porcientot"}),
                     (QStringList{"50000/50000", "100%"}));

        QTest::mouseClick(f.activas.frame(), Qt::LeftButton, {}, QPoint(20, 400));
        QCOMPARE(f.rows(), QStringLiteral("uno otra f.bin | "));
        QCOMPARE(enabledItems(f.activas.menu()), QStringList());
        QCOMPARE(texts(&f.activas, {"urlt"}), QStringList{""});

        clickRow(f.activas.rowAt(3));
        button(&f.activas, "delend")->click();
        QCOMPARE(f.rows(), QStringLiteral("otra | "));
        QCOMPARE(texts(&f.activas, {"urlt"}), QStringList{""});
        QVERIFY(QFile::exists(f.path("uno")) && QFile::exists(f.path("f.bin")));
        RowFrame *frame = f.activas.frame();
        QCOMPARE(f.activas.rowAt(2)->y(),
                 frame->findChild<QWidget *>("headers")->height() + frame->contentsRect().y());
    }

    // A link dropped on either window goes to the active list, which asks where to save it.
    void drops()
    {
        Views f;
        const auto drop = [](QWidget *target, const QString &format, const QByteArray &data) {
            QMimeData mime;
            mime.setData(format, data);
            QDragEnterEvent enter({100, 100}, Qt::CopyAction, &mime, Qt::LeftButton, {});
            QCoreApplication::sendEvent(target, &enter);
            QDropEvent drop({100, 100}, Qt::CopyAction, &mime, Qt::LeftButton, {});
            if (enter.isAccepted())
                QCoreApplication::sendEvent(target, &drop);
            return enter.isAccepted();
        };
        f.desktop.fileAnswers = {f.path("a"), f.path("c")};
        QVERIFY(!drop(&f.activas, "text/plain", " \n "));
        // A file of this machine is no link.
        QVERIFY(!drop(&f.activas, "text/uri-list", "file:///tmp/a.zip\r\n"));
        QVERIFY(drop(&f.activas, "text/uri-list", "http://127.0.0.1:9/a%20b.zip\r\n"));
        QVERIFY(drop(&f.inactivas, "text/plain", "\n  ftp://127.0.0.1:9/pub/c.bin  \nmore"));
        QTRY_COMPARE(f.rows(), QStringLiteral("a c | "));
        QCOMPARE(f.desktop.callsOf("saveFileDialog"),
                 (QStringList{f.path("a b.zip") + "|", f.path("c.bin") + "|"}));
    }

    // 40 downloads with long names in each list: the windows do not grow to fit the names, and
    // the scroll bar brings the last one into view. The keys move the selection over the rows
    // there are, stop at the ends and bring the row into view; Enter describes the download.
    void fortyLongRows()
    {
        Views f;
        const auto name = [](int i) -> QString {
            return QString::number(i) + QString(120, 'n') + ".zip";
        };
        for (int i = 1; i <= 40; ++i) {
            f.addInactive(name(i));
            f.addActive(name(i), "finished");
        }
        for (QWidget *window :
             {static_cast<QWidget *>(&f.activas), static_cast<QWidget *>(&f.inactivas)}) {
            auto *frame = window->findChild<RowFrame *>();
            const QList<download *> rows = frame->findChildren<download *>();
            auto *scroll = frame->findChild<QScrollBar *>("scroll");
            QVERIFY(rows.size() == 40 && scroll->isVisible());
            scroll->setValue(scroll->maximum());
            QVERIFY(rows.last()->isVisible() && !rows.first()->isVisible() &&
                    rows.last()->geometry().bottom() <= frame->contentsRect().bottom());
            QVERIFY(window->width() < 1000);
        }

        f.active.delfile(2, false);
        RowFrame *frame = f.activas.frame();
        const auto press = [&](Qt::Key key) {
            QTest::keyClick(frame, key);
            const download *row = f.activas.rowAt(f.active.seleccionado());
            const int header = frame->findChild<QWidget *>("headers")->height();
            const bool inView = row && row->isVisible() &&
                                row->y() >= header + frame->contentsRect().y() &&
                                row->geometry().bottom() <= frame->contentsRect().bottom();
            return f.active.seleccionado() * (inView ? 1 : -1);
        };
        QCOMPARE(press(Qt::Key_Up), 40); // from no row, upwards: the last
        QCOMPARE(press(Qt::Key_Down), 40);
        QCOMPARE(press(Qt::Key_Home), 1);
        QCOMPARE(press(Qt::Key_Down), 3);
        // A click on a row gives the list the keyboard.
        f.activas.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&f.activas));
        clickRow(f.activas.rowAt(5));
        QVERIFY(frame->hasFocus());
        QTest::keyClick(frame, Qt::Key_Return);
        QVERIFY(f.detail.isVisible());
        QCOMPARE(texts(&f.detail, {"destino"}), QStringList{f.path(name(5))});
    }

    // A double click on a row opens the one detail window for that download, which follows it
    // through its states.
    void detail()
    {
        Views f;
        ListRecord record{.Data = "http://127.0.0.1:9/dir/uno.zip",
                          .path = f.path("uno.zip"),
                          .total = 2048,
                          .bytes = 1025,
                          .tiempo = 3725,
                          .allowredo = true};
        f.active.addnew(record);
        const auto open = [&](download *row) {
            QTest::mouseDClick(row->findChild<QLabel *>("urll"), Qt::LeftButton);
        };
        const auto shown = [&] {
            f.detail.model().refresh();
            return texts(&f.detail, {"destino", "actsize", "estado"})
                   << f.detail.findChild<QLabel *>("downloaded")->text()
                   << QString::number(f.detail.findChild<Tarta *>("tarta")->proportion());
        };
        open(f.activas.rowAt(1));
        QVERIFY(f.detail.findChild<QCheckBox *>("allowredo")->isChecked());
        QCOMPARE(texts(&f.detail, {"url", "totalsize", "tiempo"}),
                 (QStringList{record.Data, "2 Kb", "1:02:05"}));
        QCOMPARE(shown(), (QStringList{f.path("uno.zip"), "1024 bytes", "Conectando...",
                                       "Descargados 1024 bytes de 2 Kb", "0.5"}));
        open(f.activas.rowAt(f.addActive("tres", "exhausted")));
        QCOMPARE(shown(), (QStringList{f.path("tres"), "5 bytes", "Se han agotado los reintentos",
                                       "Descargados 5 bytes de 1000 bytes", "0.005"}));
        open(f.activas.rowAt(f.addActive("cuatro", "finished")));
        QCOMPARE(shown(), (QStringList{f.path("cuatro"), "4 bytes", "Finalizado",
                                       "Descargados 4 bytes de 5 bytes", "0.8"}));

        // The inactive list keeps the position of the next byte as its byte count.
        record.path = f.path("cinco.zip");
        f.inactive.addnew(record);
        open(f.inactivas.rowAt(1));
        QCOMPARE(shown(),
                 (QStringList{f.path("cinco.zip"), "1 Kb", "Pausado", "Descargados 1 Kb de 2 Kb",
                              QString::number(1025.0 / 2048)}));
    }

    // The detail window tells the connections only while there are several, and a screen reader
    // reads what it shows; the texts follow the download refresh by refresh.
    void connections()
    {
        const QStringList texts{"", "Conexiones: 4", "", "Conexiones: 16", "Conexiones: 3"};
        DetailWindow window;
        DownloadInfo info;
        window.describe([&info] { return std::optional(info); });
        const auto *label = window.findChild<QLabel *>("conexiones");
        for (const QString &text : texts) {
            info.conexiones = text;
            window.model().refresh();
            QCOMPARE(label->isHidden(), text.isEmpty());
            QCOMPARE(QStringList({label->accessibleName(), label->text()}), QStringList(2, text));
        }
    }

    // A row on several connections fills its bar where the fetched stretches lie, whatever its
    // percentage, down to a stretch of a few bytes; back on one connection the bar fills from
    // the start to the percentage again. Each row is first shown with other stretches.
    void fetchedParts_data()
    {
        QTest::addColumn<PartsBar::Parts>("parts");
        QTest::addColumn<int>("percent");
        QTest::addColumn<QString>("tenths"); // the middle of each tenth: # filled, . not
        QTest::newRow("one connection") << PartsBar::Parts{} << 30 << "###.......";
        QTest::newRow("three, at both ends")
            << PartsBar::Parts{{0, 0.1}, {0.4, 0.6}, {0.9, 1}} << 40 << "#...##...#";
        QTest::newRow("a few bytes") << PartsBar::Parts{{0.5499, 0.5501}} << 0 << ".....#....";
    }
    void fetchedParts()
    {
        QFETCH(PartsBar::Parts, parts);
        QFETCH(int, percent);
        download row;
        row.resize(900, row.height());
        row.show();
        QVERIFY(QTest::qWaitForWindowExposed(&row));
        RowContent content;
        content.porcentaje = 10;
        content.parts = {{0.3, 0.45}, {0.8, 0.9}};
        row.showContent(content);
        content.porcentaje = percent;
        content.parts = parts;
        row.showContent(content);

        const QImage bar = row.findChild<QProgressBar *>("avance")->grab().toImage();
        QString shown;
        for (int i = 0; i < 10; ++i) {
            const QColor pixel = bar.pixelColor(bar.width() * (2 * i + 1) / 20, bar.height() / 2);
            shown += pixel == winColor(0xD57000) ? '#' : '.';
        }
        QTEST(shown, "tenths");
    }

    // The labels of a speed that stays, rises or drops to 0, in graphs from roomy to cramped:
    // each stands by its own point, none touches another label or a point, none leaves the
    // graph; where nine cannot stand apart there is no placing (the font is made smaller).
    void labelPlaces_data()
    {
        QTest::addColumn<QList<int>>("values");
        QTest::addColumn<QSize>("area");
        QTest::addColumn<QSize>("label"); // "2035 Kb/seg" in a small font
        QTest::addColumn<bool>("placed");
        const QList<int> flat{2035, 2036, 1952, 2000, 1995, 2008, 2001, 1998, 2003};
        const QSize label(62, 14), cramped(300, 110);
        QTest::newRow("flat, roomy") << flat << QSize(900, 300) << label << true;
        QTest::newRow("rising, cramped")
            << QList<int>{0, 300, 600, 900, 1200, 1500, 1800, 2100, 2400} << cramped << label
            << true;
        QTest::newRow("to 0, cramped")
            << QList<int>{2400, 2400, 2300, 2000, 1200, 400, 0, 0, 0} << cramped << label << true;
        QTest::newRow("smaller font") << flat << QSize(240, 100) << QSize(48, 11) << true;
        QTest::newRow("too cramped") << flat << QSize(240, 60) << label << false;
    }
    void labelPlaces()
    {
        QFETCH(QList<int>, values);
        QFETCH(QSize, area);
        QFETCH(QSize, label);
        GraphModel model;
        for (int value : values)
            model.addvalue(value, {});
        QList<QRect> points;
        for (int i = 0; i < GraphModel::Points; ++i) {
            const QPointF twips = model.pointAt(i, area.width() * 15.0, area.height() * 15.0);
            points << QRect(qRound(twips.x() / 15), qRound(twips.y() / 15), 7, 7);
        }

        const QList<QRect> places =
            GraphModel::placeLabels(points, QList<QSize>(GraphModel::Points, label), area);

        QTEST(!places.isEmpty(), "placed");
        for (int i = 0; i < places.size(); ++i) {
            const QRect place = places[i];
            const bool atEdge = place.left() == 0 || place.right() == area.width() - 1;
            QVERIFY2(QRect(QPoint(), area).contains(place) &&
                         (atEdge || qAbs(place.center().x() - points[i].center().x()) <= 1),
                     qPrintable(QString::number(i)));
            for (int j = 0; j < GraphModel::Points; ++j)
                QVERIFY2(!place.intersects(points[j]) && (j == i || !place.intersects(places[j])),
                         qPrintable(QString("%1 %2").arg(i).arg(j)));
        }
    }

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
        QCOMPARE(f.desktop.calls.size(), written ? 0 : 1);
        if (!written) {
            QVERIFY(f.desktop.calls[0].startsWith("messageBox|Critical|"));
            return;
        }
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

QTEST_MAIN(TestWindows)
#include "tst_windows.moc"
