#include "scriptedhttpserver.h"
#include "transfer.h"
#include "viewfixture.h"

#include <QGroupBox>
#include <QLineEdit>
#include <QMimeData>
#include <QScrollBar>
#include <QSignalSpy>

namespace {

const QStringList Commands = {"continuar", "pausar",    "cancelar",
                              "ejecutar",  "antivirus", "propiedades"};
// The toolbar button of each command of `menu`, in the same order.
const QStringList Buttons = {"continuar", "pausar", "detener", "open", "antivirus", ""};

void setState(ViewFixture &f, int index, const QString &state)
{
    if (state == "exhausted")
        f.active.rowAt(index)->setRedoend(true);
    else if (state == "connected")
        f.active.rowAt(index)->setReconectando(false);
}

} // namespace

class TestActiveWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void names();
    void rowClick_data();
    void rowClick();
    void rightClickMenu();
    void commands_data();
    void commands();
    void reconnectAfterFailure();
    void delendWithSelectedFinished();
    void answerComesLate_data();
    void answerComesLate();
    void drops_data();
    void drops();
    void apagar();
    void destroyedInEitherOrder_data();
    void destroyedInEitherOrder();
    void fortyLongRows_data();
    void fortyLongRows();
};

void TestActiveWindow::names()
{
    ViewFixture f;
    QCOMPARE(f.activas.windowTitle(), QStringLiteral("Descargas activas"));
    QCOMPARE(
        ViewFixture::toolbarKeys(&f.activas),
        (QStringList{"detener", "pausar", "continuar", "delend", "open", "antivirus", "apagar"}));
    QCOMPARE(ViewFixture::button(&f.activas, "continuar")->toolTip(), QStringLiteral("Reconectar"));
    // Every field of the panel has its label.
    for (const char *field :
         {"urlt", "bytest", "porcientot", "velmedia", "tiempou", "tiemporest"}) {
        auto *edit = f.activas.findChild<QLineEdit *>(field);
        QVERIFY2(edit, field);
        bool labelled = false;
        for (QLabel *label : f.activas.findChildren<QLabel *>())
            labelled = labelled || label->buddy() == edit;
        QVERIFY2(labelled, field);
    }
}

void TestActiveWindow::rowClick_data()
{
    QTest::addColumn<QString>("state");
    QTest::addColumn<QStringList>("enabled");
    QTest::newRow("running") << "connected" << QStringList{"pausar", "cancelar", "propiedades"};
    QTest::newRow("finished") << "finished" << QStringList{"ejecutar", "antivirus", "propiedades"};
    QTest::newRow("retries exhausted")
        << "exhausted" << QStringList{"continuar", "pausar", "cancelar", "propiedades"};
}

// A click selects the row and describes it; the buttons follow the download's state.
void TestActiveWindow::rowClick()
{
    QFETCH(QString, state);
    ViewFixture f;
    f.addActive("otra");
    const int i = f.addActive("uno", state == "finished");
    setState(f, i, state);
    f.active.slotAt(i).velocidad = 12;
    f.active.slotAt(i).tiempo = 65;
    ViewFixture::clickRow(f.activas.rowAt(1));
    ViewFixture::clickRow(f.activas.rowAt(i));

    QCOMPARE(f.active.seleccionado(), i);
    QVERIFY(f.activas.rowAt(i)->selected() && !f.activas.rowAt(1)->selected());
    QTEST(ViewFixture::enabledItems(f.activas.menu()), "enabled");
    for (int k = 0; k < Buttons.size() - 1; ++k)
        QCOMPARE(ViewFixture::button(&f.activas, qPrintable(Buttons[k]))->isEnabled(),
                 f.activas.menu()->actions()[k]->isEnabled());
    QCOMPARE(f.activas.findChild<QGroupBox *>("inf")->title(),
             "Información detallada de " + f.path("uno"));
    QCOMPARE(f.activas.findChild<QLineEdit *>("urlt")->text(), "http://127.0.0.1:9/uno");
    QCOMPARE(f.activas.findChild<QLineEdit *>("velmedia")->text(), QStringLiteral("12 Kb/seg"));
    QCOMPARE(f.activas.findChild<QLineEdit *>("tiempou")->text(), QStringLiteral("0:01:05"));
    QCOMPARE(f.activas.findChild<QLineEdit *>("bytest")->text(),
             state == "finished" ? QStringLiteral("4/5") : QStringLiteral("5/1000"));
    QCOMPARE(f.activas.findChild<QLineEdit *>("porcientot")->text(),
             state == "finished" ? QStringLiteral("100%") : QStringLiteral("1%"));

    // A click on the empty part of the list clears the selection and the panel.
    QTest::mouseClick(f.activas.frame(), Qt::LeftButton, {}, QPoint(20, 400));
    QCOMPARE(f.active.seleccionado(), 0);
    QCOMPARE(ViewFixture::enabledItems(f.activas.menu()), QStringList());
    QCOMPARE(f.activas.findChild<QLineEdit *>("urlt")->text(), QString());
}

void TestActiveWindow::rightClickMenu()
{
    ViewFixture f;
    f.addActive("uno", true);
    ViewFixture::clickRow(f.activas.rowAt(1), Qt::RightButton);
    QCOMPARE(f.active.seleccionado(), 1);
    QTRY_VERIFY(f.activas.menu()->isVisible());
    QCOMPARE(ViewFixture::enabledItems(f.activas.menu()),
             (QStringList{"ejecutar", "antivirus", "propiedades"}));
    // The download goes while its menu is open: the items follow.
    f.active.delend();
    QCOMPARE(ViewFixture::enabledItems(f.activas.menu()), QStringList());
    f.activas.menu()->hide();
}

void TestActiveWindow::commands_data()
{
    QTest::addColumn<QString>("state");
    QTest::addColumn<bool>("allowredo");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QList<bool>>("answers");
    QTest::addColumn<bool>("stays");      // still in the active list
    QTest::addColumn<bool>("fileKept");   // the partial file is still there
    QTest::addColumn<bool>("paused");     // now in the inactive list
    QTest::addColumn<QString>("history"); // how the history line begins, empty for none
    QTest::addColumn<QStringList>("calls");

    const QString cancel = "askYesNo|¿Seguro que desea cancelar la transferencia de %1?";
    const QString warn = "askYesNo|Advertencia: Este servidor no soporta la reanudación de "
                         "descargas, así que empezará de cero la próxima vez. ¿Desea pausar la "
                         "descarga de todas formas?";
    QTest::newRow("cancel, yes") << "connected" << true << "detener" << QList<bool>{true} << false
                                 << false << false << "\r\nCancelada la descarga de %1 a las "
                                 << QStringList{cancel};
    QTest::newRow("cancel, no") << "connected" << true << "detener" << QList<bool>{false} << true
                                << true << false << "" << QStringList{cancel};
    QTest::newRow("pause, resumable")
        << "connected" << true << "pausar" << QList<bool>{} << false << true << true
        << "\r\nPausada la descarga de %1 a las " << QStringList{};
    QTest::newRow("pause, not resumable, no")
        << "connected" << false << "pausar" << QList<bool>{false} << true << true << false << ""
        << QStringList{warn};
    QTest::newRow("pause, not resumable, yes")
        << "connected" << false << "pausar" << QList<bool>{true} << false << true << true
        << "\r\nPausada la descarga de %1 a las " << QStringList{warn};
    QTest::newRow("pause, finished") << "finished" << true << "pausar" << QList<bool>{} << true
                                     << true << false << "" << QStringList{};
    QTest::newRow("open, finished")
        << "finished" << true << "open" << QList<bool>{} << true << true << false
        << "\r\nEjecutado el archivo %1 a las " << QStringList{"openFile|%1"};
    QTest::newRow("open, running") << "connected" << true << "open" << QList<bool>{} << true << true
                                   << false << "" << QStringList{};
    QTest::newRow("antivirus, none set")
        << "finished" << true << "antivirus" << QList<bool>{} << true << true << false << ""
        << QStringList{"messageBox|Exclamation|No hay ningún antivirus configurado."};
    QTest::newRow("antivirus, running") << "connected" << true << "antivirus" << QList<bool>{}
                                        << true << true << false << "" << QStringList{};
    QTest::newRow("reconnect, not exhausted") << "connected" << true << "continuar" << QList<bool>{}
                                              << true << true << false << "" << QStringList{};
}

// Each toolbar button as a person presses it, on the selected download.
void TestActiveWindow::commands()
{
    QFETCH(QString, state);
    QFETCH(bool, allowredo);
    QFETCH(QString, key);
    QFETCH(QList<bool>, answers);
    QFETCH(QString, history);
    QFETCH(QStringList, calls);
    ViewFixture f;
    const int i = f.addActive("uno", state == "finished", allowredo);
    setState(f, i, state);
    ViewFixture::clickRow(f.activas.rowAt(i));
    f.desktop.calls.clear();
    f.desktop.yesNoAnswers.assign(answers.begin(), answers.end());
    // A disabled button cannot be pressed; the command behind it must refuse too.
    if (ViewFixture::button(&f.activas, qPrintable(key))->isEnabled())
        ViewFixture::click(&f.activas, qPrintable(key));
    else
        ViewFixture::button(&f.activas, qPrintable(key))->defaultAction()->trigger();

    QTEST(f.active.existe(i), "stays");
    QTEST(QFile::exists(f.path("uno")), "fileKept");
    QTEST(f.inactive.existe(1), "paused");
    for (QString &call : calls)
        call = call.arg(f.path("uno"));
    QCOMPARE(f.desktop.calls, calls);
    if (history.isEmpty()) {
        QCOMPARE(f.history.lines, QStringList());
    } else {
        QCOMPARE(f.history.lines.size(), 1);
        QVERIFY2(f.history.lines[0].startsWith(history.arg(f.path("uno"))),
                 qPrintable(f.history.lines[0]));
    }
    if (f.inactive.existe(1)) {
        QCOMPARE(f.inactive.registro(1).bytes, 6);
        QVERIFY(f.history.lines[0].endsWith(" cuando llevaba descargado 6 bytes"));
        QCOMPARE(f.active.seleccionado(), 0);
    }
}

// A server that refused the file once gives it the second time: "continuar" fetches it again,
// with the whole retry budget.
void TestActiveWindow::reconnectAfterFailure()
{
    ViewFixture f;
    const QByteArray content = randomBytes(50000);
    ScriptedHttpServer server([&](const QByteArray &request, int index) {
        return index == 0 ? ScriptedHttpServer::status("HTTP/1.1 404 Not Found")
                          : ScriptedHttpServer::file(content, request, true);
    });
    f.active.addnew(server.url("f.bin"), f.path("f.bin"), 0, 0, false, 0, false, "", "", false);
    QTRY_VERIFY(f.activas.rowAt(1)->redoend());
    f.active.transferAt(1)->setRedoBudget(0);
    ViewFixture::clickRow(f.activas.rowAt(1));
    QVERIFY(ViewFixture::button(&f.activas, "continuar")->isEnabled());
    ViewFixture::click(&f.activas, "continuar");
    QVERIFY(!f.activas.rowAt(1)->redoend());
    QVERIFY(!ViewFixture::button(&f.activas, "continuar")->isEnabled());
    QCOMPARE(f.active.transferAt(1)->redoBudget(), f.settings.vecesv);
    QTRY_VERIFY(f.activas.rowAt(1)->finalizado());
    QCOMPARE(f.read("f.bin"), content);
    QCOMPARE(server.requests().size(), 2);
    // Finished while selected: the buttons follow.
    QVERIFY(ViewFixture::button(&f.activas, "open")->isEnabled());
}

void TestActiveWindow::delendWithSelectedFinished()
{
    ViewFixture f;
    f.addActive("uno", true);
    f.addActive("dos");
    f.addActive("tres", true);
    ViewFixture::clickRow(f.activas.rowAt(3));
    ViewFixture::click(&f.activas, "delend");
    QCOMPARE(f.active.seleccionado(), 0);
    QCOMPARE(f.activas.findChild<QLineEdit *>("urlt")->text(), QString());
    QVERIFY(!f.active.existe(1) && f.active.existe(2) && !f.active.existe(3));
    QVERIFY(QFile::exists(f.path("uno")) && QFile::exists(f.path("tres")));
    // The rows that stay move up.
    QCOMPARE(f.activas.rowAt(2)->y(), f.activas.frame()->findChild<QWidget *>("headers")->height() +
                                          f.activas.frame()->contentsRect().y());
}

void TestActiveWindow::answerComesLate_data()
{
    QTest::addColumn<QString>("meanwhile");
    QTest::addColumn<bool>("stays");
    QTest::addColumn<bool>("fileKept");
    // A download that ends while it is asked about is still the one that was asked about.
    QTest::newRow("finishes") << "finish" << false << false;
    QTest::newRow("is removed") << "remove" << false << true;
    QTest::newRow("another takes its slot") << "replace" << true << true;
}

// The cancel question is open while the download changes: the answer acts on what the slot
// holds then, and never on another download.
void TestActiveWindow::answerComesLate()
{
    QFETCH(QString, meanwhile);
    ViewFixture f;
    const int i = f.addActive("uno");
    ViewFixture::clickRow(f.activas.rowAt(i));
    f.desktop.whileAsking = [&] {
        if (meanwhile == "finish") {
            f.active.rowAt(i)->DownloadEnd();
            f.active.rowAt(i)->setFinalizado(true);
        } else {
            f.active.delfile(i, false);
            if (meanwhile == "replace")
                f.addActive("otra");
        }
    };
    f.desktop.yesNoAnswers = {true};
    ViewFixture::click(&f.activas, "detener");
    QTEST(f.active.existe(i), "stays");
    QTEST(QFile::exists(f.path("uno")), "fileKept");
    QVERIFY(QFile::exists(f.path("otra")) || meanwhile != "replace");
    QVERIFY(f.active.seleccionado() == 0 || f.active.existe(f.active.seleccionado()));
}

void TestActiveWindow::drops_data()
{
    QTest::addColumn<bool>("onInactive");
    QTest::addColumn<QString>("format");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("added"); // empty: the drop is refused
    QTest::newRow("link list") << false << "text/uri-list"
                               << QByteArray("http://127.0.0.1:9/a%20b.zip\r\n") << "a b.zip";
    QTest::newRow("text on the inactive window")
        << true << "text/plain" << QByteArray("\n  ftp://127.0.0.1:9/pub/c.bin  \nmore") << "c.bin";
    QTest::newRow("nothing in it") << false << "text/plain" << QByteArray(" \n ") << "";
}

// A link dropped on either window goes to the active list, which asks where to save it.
void TestActiveWindow::drops()
{
    QFETCH(bool, onInactive);
    QFETCH(QString, format);
    QFETCH(QByteArray, data);
    QFETCH(QString, added);
    ViewFixture f;
    QWidget *target = onInactive ? static_cast<QWidget *>(&f.inactivas) : &f.activas;
    QMimeData mime;
    mime.setData(format, data);
    const QPoint at(100, 100);
    QDragEnterEvent enter(at, Qt::CopyAction, &mime, Qt::LeftButton, {});
    QCoreApplication::sendEvent(target, &enter);
    QCOMPARE(enter.isAccepted(), !added.isEmpty());
    if (added.isEmpty())
        return;
    f.desktop.fileAnswers.push_back(f.path("guardado"));
    QDropEvent drop(at, Qt::CopyAction, &mime, Qt::LeftButton, {});
    QCoreApplication::sendEvent(target, &drop);
    QTRY_VERIFY(f.active.existe(1));
    QCOMPARE(f.desktop.callsOf("saveFileDialog"), QStringList{f.path(added) + "|"});
    QCOMPARE(f.active.slotAt(1).path, f.path("guardado"));
    QVERIFY(!f.inactive.existe(1));
}

void TestActiveWindow::apagar()
{
    ViewFixture f;
    QAction *apagar = f.activas.apagarAction();
    QVERIFY(apagar->isCheckable() && !apagar->isChecked());
    QCOMPARE(apagar->text(), QStringLiteral("A&pagar equipo al finalizar"));
    ViewFixture::click(&f.activas, "apagar");
    QVERIFY(f.active.apagar());
    // Nothing left to download: the computer goes off and the switch is released.
    f.active.shutdownTick();
    QCOMPARE(f.desktop.calls, QStringList{"powerOff"});
    QVERIFY(!apagar->isChecked());
}

void TestActiveWindow::destroyedInEitherOrder_data()
{
    QTest::addColumn<bool>("listFirst");
    QTest::newRow("list first") << true;
    QTest::newRow("window first") << false;
}

// The list owns the rows and the window's frame holds them: whichever goes first, each row is
// deleted once, by the list, also a row that was just removed and waits to be deleted.
void TestActiveWindow::destroyedInEitherOrder()
{
    QFETCH(bool, listFirst);
    EngineFixture e;
    DetailWindow detail;
    auto list = std::make_unique<ActiveList>(e.settings, e.desktop, e.history, e.folder,
                                             EngineFixture::plainRows());
    auto window = std::make_unique<ActiveWindow>(*list, detail);
    window->show();
    list->addnew("http://127.0.0.1:9/a", e.path("a"), 5, 5, false, 0, false, "", "", false);
    list->addnew("http://127.0.0.1:9/b", e.path("b"), 5, 5, false, 0, false, "", "", false);
    const QPointer<download> kept = window->rowAt(1);
    const QPointer<download> removed = window->rowAt(2);
    list->delfile(2, false);
    QVERIFY(kept && removed && !removed->parent());
    if (listFirst) {
        list.reset();
        QVERIFY(!kept && !removed);
        window.reset();
    } else {
        window.reset();
        QVERIFY(kept && !kept->parent());
        list->addnew("http://127.0.0.1:9/c", e.path("c"), 5, 5, false, 0, false, "", "", false);
        QVERIFY(!dynamic_cast<download *>(list->rowAt(2)));
        list.reset();
        QVERIFY(!kept && !removed);
    }
}

void TestActiveWindow::fortyLongRows_data()
{
    QTest::addColumn<bool>("inactive");
    QTest::newRow("activas") << false;
    QTest::newRow("inactivas") << true;
}

// 40 downloads with long names: the scroll bar brings the last one into view.
void TestActiveWindow::fortyLongRows()
{
    QFETCH(bool, inactive);
    ViewFixture f;
    const QString longName = QString(120, 'n') + ".zip";
    for (int i = 0; i < 40; ++i) {
        const QString name = QString::number(i) + longName;
        if (inactive)
            f.inactive.addnew("http://127.0.0.1:9/" + name, f.path(name), 0, 0, false, 0, false, "",
                              "", false, false);
        else
            f.addActive(name, true);
    }
    QWidget *window = inactive ? static_cast<QWidget *>(&f.inactivas) : &f.activas;
    RowFrame *frame = inactive ? f.inactivas.frame() : f.activas.frame();
    const auto row = [&](int index) {
        return inactive ? f.inactivas.rowAt(index) : f.activas.rowAt(index);
    };
    auto *scroll = frame->findChild<QScrollBar *>("scroll");
    QVERIFY(scroll->isVisible());
    QVERIFY(!row(40)->isVisible() || row(40)->geometry().bottom() > frame->height());
    scroll->setValue(scroll->maximum());
    QVERIFY(row(40)->isVisible());
    QVERIFY(row(40)->geometry().bottom() <= frame->contentsRect().bottom());
    QVERIFY(!row(1)->isVisible());
    // The window did not grow to fit the names.
    QVERIFY(window->width() < 1000);
}

QTEST_MAIN(TestActiveWindow)
#include "tst_activewindow.moc"
