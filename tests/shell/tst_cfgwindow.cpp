#include "cfgwindow.h"
#include "settingsfixture.h"

#include <QCheckBox>
#include <QFile>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTest>

namespace {

// The settings window over a fresh program folder; controls are found by name.
struct WindowFixture : SettingsFixture
{
    CfgWindow window{model, desktop};

    template <typename T> T *child(const QString &name)
    {
        auto *found = window.findChild<T *>(name);
        if (!found)
            qFatal("no control %s", qPrintable(name));
        return found;
    }
    void click(const QString &name) { child<QPushButton>(name)->click(); }
    QStringList ext()
    {
        auto *list = child<QListWidget>("ext");
        QStringList texts;
        for (int i = 0; i < list->count(); ++i)
            texts.append(list->item(i)->text());
        return texts;
    }
};

} // namespace

class TestCfgWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tabs();
    void cancelRestores();
    void aceptWrites();
    void browse_data();
    void browse();
    void extensions();
};

void TestCfgWindow::tabs()
{
    WindowFixture f;
    QCOMPARE(f.window.objectName(), "cfg");
    QCOMPARE(f.window.windowTitle(), "Configuración");
    auto *tab = f.child<QTabWidget>("tab");
    QStringList titles;
    for (int i = 0; i < tab->count(); ++i)
        titles.append(tab->tabText(i));
    QCOMPARE(titles,
             (QStringList{"Opciones generales", "Descargas", "Actualizaciones", "Notificaciones"}));
}

void TestCfgWindow::cancelRestores()
{
    WindowFixture f;
    // setup: a saved file and a window showing it
    QVERIFY(f.model.save());
    f.window.show();
    auto *ext = f.child<QListWidget>("ext");
    const QStringList savedExt = f.ext();

    // action: edit every kind of control, then cancel
    QTest::keyClicks(f.child<QLineEdit>("virus"), "/usr/bin/scan");
    f.child<QCheckBox>("initstart")->click();
    f.child<QSpinBox>("segsv")->setValue(42);
    QCOMPARE(f.child<QLineEdit>("segs")->text(), "42");
    f.child<QSpinBox>("histsize")->setValue(300);
    QCOMPARE(f.child<QLineEdit>("hsizet")->text(), "300");
    f.child<QRadioButton>("msgno")->click();
    QVERIFY(f.model.settings().msgno);
    ext->setCurrentRow(0);
    f.click("del");
    f.desktop.inputAnswers.push_back(QString(".iso"));
    f.click("add");
    QCOMPARE(f.model.settings().ext.size(), 13);
    f.click("cancel");

    // verify
    QVERIFY(!f.window.isVisible());
    QCOMPARE(f.child<QLineEdit>("virus")->text(), QString());
    QVERIFY(f.child<QCheckBox>("initstart")->isChecked());
    QCOMPARE(f.child<QSpinBox>("segsv")->value(), 5);
    QCOMPARE(f.child<QLineEdit>("segs")->text(), "5");
    QCOMPARE(f.child<QSpinBox>("histsize")->value(), 10);
    QCOMPARE(f.child<QLineEdit>("hsizet")->text(), "10");
    QVERIFY(f.child<QRadioButton>("msgdialog")->isChecked());
    QVERIFY(!f.child<QRadioButton>("msgno")->isChecked());
    QCOMPARE(f.ext(), savedExt);
    QCOMPARE(f.model.settings().ext, savedExt);
    QCOMPARE(f.desktop.callsOf("messageBox"), QStringList());
}

void TestCfgWindow::aceptWrites()
{
    WindowFixture f;
    f.window.show();
    f.child<QLineEdit>("wait")->setText("25");
    f.child<QRadioButton>("autoact")->click();
    f.child<QCheckBox>("wavs")->click();

    f.click("acept");

    QVERIFY(!f.window.isVisible());
    QCOMPARE(f.history.lines.size(), 1);
    QVERIFY(f.history.lines.first().startsWith("\r\nConfiguración cambiada a las "));
    QFile file(f.iniPath());
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QList<QByteArray> lines = file.readAll().split('\n');
    QCOMPARE(lines.at(11), "25\r");    // the text box, not the spin value
    QCOMPARE(lines.at(13), "True\r");  // autoact
    QCOMPARE(lines.at(14), "False\r"); // notact
    QCOMPARE(lines.at(18), " 0 \r");   // wavs
}

void TestCfgWindow::browse_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<bool>("taken");
    QTest::addColumn<QString>("answer");
    QTest::newRow("folder, no separator added") << "brdir" << true << "/srv/bajadas";
    QTest::newRow("folder cancelled") << "brdir" << false << "";
    QTest::newRow("antivirus chosen") << "brvirus" << true << "/usr/bin/scan";
    QTest::newRow("antivirus pattern") << "brvirus" << false << "*.exe";
    QTest::newRow("antivirus cancelled") << "brvirus" << false << "";
    QTest::newRow("history chosen") << "histbr" << true << "/srv/h.rtf";
    QTest::newRow("history pattern") << "histbr" << false << "*.rtf";
    QTest::newRow("history cancelled") << "histbr" << false << "";
}

void TestCfgWindow::browse()
{
    QFETCH(QString, button);
    QFETCH(bool, taken);
    QFETCH(QString, answer);
    const QHash<QString, QString> boxes{
        {"brdir", "defdir"}, {"brvirus", "virus"}, {"histbr", "histrut"}};
    WindowFixture f;
    auto *edit = f.child<QLineEdit>(boxes.value(button));
    const QString old = edit->text();
    f.desktop.fileAnswers.push_back(answer);

    f.click(button);

    QCOMPARE(edit->text(), taken ? answer : old);
    QCOMPARE(f.desktop.calls.size(), 1);
    if (button == "histbr")
        QCOMPARE(f.desktop.calls.first(), "saveFileDialog|" + old + "|*.rtf");
}

void TestCfgWindow::extensions()
{
    WindowFixture f;
    auto *ext = f.child<QListWidget>("ext");
    ext->clearSelection();
    f.click("del"); // nothing selected: nothing goes
    f.desktop.inputAnswers = {QString(".exe"), QString(), std::nullopt, QString("iso")};
    for (int i = 0; i < 4; ++i)
        f.click("add");
    QStringList expected = f.model.settings().ext;
    QCOMPARE(expected.size(), 15);
    QCOMPARE(expected.mid(13), (QStringList{".exe", "iso"})); // as typed, duplicates kept
    QCOMPARE(f.ext(), expected);
    QCOMPARE(f.desktop.callsOf("inputBox").first(),
             "Escriba la extensión del tipo de archivo con el punto (p.ej .exe)|");

    ext->setCurrentRow(1);
    f.click("del");
    expected.removeAt(1);
    QCOMPARE(f.ext(), expected);
    QCOMPARE(f.model.settings().ext, expected);
}

QTEST_MAIN(TestCfgWindow)
#include "tst_cfgwindow.moc"
