#include "viewfixture.h"

class TestInactiveWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void names();
    void commands_data();
    void commands();
    void menuAndSelection();
};

void TestInactiveWindow::names()
{
    ViewFixture f;
    QCOMPARE(f.inactivas.windowTitle(), QStringLiteral("Descargas inactivas"));
    QCOMPARE(ViewFixture::toolbarKeys(&f.inactivas),
             (QStringList{"detener", "continuar", "bloquear"}));
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
    QCOMPARE(f.inactivas.menu2()->objectName(), QStringLiteral("menu2"));
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

QTEST_MAIN(TestInactiveWindow)
#include "tst_inactivewindow.moc"
