#include "cfgwindow.h"
#include "settingsfixture.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>

namespace {

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

class TestSettings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
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

QTEST_MAIN(TestSettings)
#include "tst_settings.moc"
