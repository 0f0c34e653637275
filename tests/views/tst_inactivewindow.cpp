#include "rowframe.h"
#include "viewfixture.h"

class TestInactiveWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void names();
    void commands_data();
    void commands();
    void menuAndSelection();
    void scrollRule_data();
    void scrollRule();
};

void TestInactiveWindow::names()
{
    ViewFixture f;
    QCOMPARE(f.inactivas.objectName(), QStringLiteral("inactivas"));
    QCOMPARE(f.inactivas.windowTitle(), QStringLiteral("Descargas inactivas"));
    QStringList keys;
    for (QToolButton *button : f.inactivas.findChildren<QToolButton *>()) {
        if (button->defaultAction() && !button->objectName().isEmpty()) {
            keys.append(button->objectName() + ' ' + button->toolTip());
            QCOMPARE(button->accessibleName(), button->toolTip());
        }
    }
    QCOMPARE(keys, (QStringList{"detener Cancelar descarga", "continuar Continuar descarga",
                                "bloquear Bloquear/desbloquear descarga"}));
    QCOMPARE(f.inactivas.menu2()->objectName(), QStringLiteral("menu2"));
    QStringList items;
    for (QAction *item : f.inactivas.menu2()->actions())
        items.append(item->objectName() + ' ' + item->text());
    QCOMPARE(items, (QStringList{"continuar2 Co&ntinuar", "cancelar2 &Cancelar",
                                 "bloquear &Bloquear", "propiedades2 &Propiedades"}));
}

void TestInactiveWindow::commands_data()
{
    QTest::addColumn<int>("select"); // the row clicked first, 0 for none
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("answer");
    QTest::addColumn<bool>("activeFull");
    QTest::addColumn<bool>("stays"); // still in the inactive list
    QTest::addColumn<bool>("fileKept");
    QTest::addColumn<bool>("locked");
    QTest::addColumn<int>("selected"); // the selection afterwards
    QTest::addColumn<QString>("history");
    QTest::addColumn<QString>("message");

    QTest::newRow("cancel, yes") << 2 << "detener" << true << false << false << false << false << 0
                                 << "Cancelada la descarga de "
                                 << "";
    QTest::newRow("cancel, no") << 2 << "detener" << false << false << true << true << false << 2
                                << ""
                                << "";
    QTest::newRow("continue") << 2 << "continuar" << false << false << false << true << false << 0
                              << "Se continúa la descarga de "
                              << "";
    QTest::newRow("continue, active list full")
        << 2 << "continuar" << false << true << true << true << false << 2 << ""
        << "Critical|Ya hay activas el número máximo configurado.";
    QTest::newRow("lock") << 2 << "bloquear" << false << false << true << true << true << 2 << ""
                          << "";
    QTest::newRow("nothing selected")
        << 0 << "detener" << true << false << true << true << false << 0 << ""
        << "";
}

void TestInactiveWindow::commands()
{
    QFETCH(int, select);
    QFETCH(QString, key);
    QFETCH(bool, answer);
    QFETCH(bool, activeFull);
    QFETCH(QString, history);
    QFETCH(QString, message);
    ViewFixture f;
    f.settings.maxdescval = activeFull ? 2 : 10;
    f.addActive("corriendo");
    for (const char *name : {"uno", "dos"}) {
        f.write(name, "parte");
        f.inactive.addnew(QStringLiteral("http://127.0.0.1:9/") + name, f.path(name), 100, 5, true,
                          3, false, "", "", false, false);
    }
    if (select)
        ViewFixture::clickRow(f.inactivas.rowAt(select));
    QCOMPARE(ViewFixture::button(&f.inactivas, qPrintable(key))->isEnabled(), select != 0);
    f.desktop.calls.clear();
    f.desktop.yesNoAnswers = {answer};
    ViewFixture::button(&f.inactivas, qPrintable(key))->defaultAction()->trigger();

    QTEST(f.inactive.existe(2), "stays");
    QTEST(QFile::exists(f.path("dos")), "fileKept");
    QTEST(f.inactive.registro(2).locked && f.inactivas.rowAt(2)->locked(), "locked");
    QTEST(f.inactive.seleccionado(), "selected");
    QCOMPARE(ViewFixture::button(&f.inactivas, "detener")->isEnabled(),
             f.inactive.seleccionado() != 0);
    QVERIFY(f.inactive.existe(1));
    if (history.isEmpty())
        QCOMPARE(f.history.lines, QStringList());
    else
        QVERIFY(f.history.lines.value(0).startsWith(history + f.path("dos") + " a las "));
    QCOMPARE(f.desktop.callsOf("messageBox"),
             message.isEmpty() ? QStringList() : QStringList{message});
    // Continued downloads join the active list, behind the one already there.
    QCOMPARE(f.active.existe(2), key == "continuar" && !activeFull);
}

void TestInactiveWindow::menuAndSelection()
{
    ViewFixture f;
    f.inactive.addnew("http://127.0.0.1:9/a", f.path("a"), 0, 0, false, 0, false, "", "", false,
                      true);
    ViewFixture::clickRow(f.inactivas.rowAt(1), Qt::RightButton);
    QTRY_VERIFY(f.inactivas.menu2()->isVisible());
    QCOMPARE(ViewFixture::enabledItems(f.inactivas.menu2()),
             (QStringList{"continuar2", "cancelar2", "bloquear", "propiedades2"}));
    f.inactivas.menu2()->hide();
    QVERIFY(f.inactivas.rowAt(1)->findChild<QLabel *>("candado")->isVisible());

    // The download leaves for the active list while selected: nothing stays selected.
    f.inactive.toact(1);
    f.inactive.delfile(1, false);
    QCOMPARE(f.inactive.seleccionado(), 0);
    QCOMPARE(ViewFixture::enabledItems(f.inactivas.menu2()), QStringList());
}

void TestInactiveWindow::scrollRule_data()
{
    QTest::addColumn<int>("k");
    QTest::addColumn<int>("highest");
    QTest::addColumn<int>("value");
    QTest::addColumn<double>("top");
    QTest::newRow("first row, not scrolled") << 0 << 10 << 0 << 300.0;
    QTest::newRow("third row") << 2 << 10 << 0 << 900.0;
    QTest::newRow("scrolled by half the slots") << 6 << 10 << 50 << 600.0;
    // Moved above the headers: hidden.
    QTest::newRow("scrolled out") << 0 << 40 << 10 << -900.0;
}

void TestInactiveWindow::scrollRule()
{
    QFETCH(int, k);
    QFETCH(int, highest);
    QFETCH(int, value);
    QFETCH(double, top);
    QCOMPARE(rowTop(k, highest, value, 300), top);
    QCOMPARE(scrollMaximum(5, 5, 5), 0);
    // 40 rows with 10 in view: 30 must go, 75 % of the 40 slots.
    QCOMPARE(scrollMaximum(40, 40, 10), 75);
    // Free slots count in the rule, so fewer rows need a larger value; never beyond 100.
    QCOMPARE(scrollMaximum(12, 40, 2), 25);
    QCOMPARE(scrollMaximum(40, 20, 0), 100);
}

QTEST_MAIN(TestInactiveWindow)
#include "tst_inactivewindow.moc"
