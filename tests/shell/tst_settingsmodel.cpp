#include "settingsfixture.h"

#include <QFile>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

namespace {

// Every setting as "name=value", so a table row names only the values it is about.
QMap<QString, QString> describe(const Settings &s)
{
    const auto n = [](int value) { return QString::number(value); };
    return {
        {"defdir", s.defdir},
        {"initstart", n(s.initstart)},
        {"showmsg", n(s.showmsg)},
        {"exevirus", n(s.exevirus)},
        {"virus", s.virus},
        {"segs", s.segs},
        {"segsv", n(s.segsv)},
        {"veces", s.veces},
        {"vecesv", n(s.vecesv)},
        {"delinc", n(s.delinc)},
        {"dellista", n(s.dellista)},
        {"autocont", n(s.autocont)},
        {"maxdesc", s.maxdesc},
        {"maxdescval", n(s.maxdescval)},
        {"wait", s.wait},
        {"waitv", n(s.waitv)},
        {"checkact", n(s.checkact)},
        {"autoact", n(s.autoact)},
        {"notact", n(s.notact)},
        {"msgno", n(s.msgno)},
        {"msgdialog", n(s.msgdialog)},
        {"msgsys", n(s.msgsys)},
        {"wavs", n(s.wavs)},
        {"histrut", s.histrut},
        {"histsize", n(s.histsize)},
        {"hsizet", s.hsizet},
        {"ext", s.ext.join('|')},
    };
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

} // namespace

class TestSettingsModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void writesDefaults();
    void reading_data();
    void reading();
    void roundTrip();
    void emptyFolderAfterSave();
    void writeFailure();
    void spinRanges();
};

void TestSettingsModel::writesDefaults()
{
    SettingsFixture f;

    QVERIFY(f.model.save());

    QFile file(f.iniPath());
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray folder = f.folder().toUtf8();
    QCOMPARE(file.readAll(), folder +
                                 "/download/\r\n 1 \r\n 0 \r\n 0 \r\n\r\n5\r\n5\r\n 0 \r\n 0 \r\n"
                                 " 1 \r\n10\r\n10\r\n 1 \r\nFalse\r\nTrue\r\nFalse\r\nTrue\r\n"
                                 "False\r\n 1 \r\n" +
                                 folder +
                                 "/historial.rtf\r\n 10 \r\n.zip\r\n.exe\r\n.cab\r\n.tar\r\n"
                                 ".ace\r\n.com\r\n.arj\r\n.doc\r\n.vb\r\n.vbs\r\n.gz\r\n.js\r\n"
                                 ".pif\r\n");
    QCOMPARE(f.history.lines.size(), 1);
    QVERIFY2(QRegularExpression("^\r\nConfiguración cambiada a las \\d\\d:\\d\\d:\\d\\d$")
                 .match(f.history.lines.first())
                 .hasMatch(),
             qPrintable(f.history.lines.first()));
    QVERIFY(f.desktop.calls.isEmpty());
}

void TestSettingsModel::reading_data()
{
    QTest::addColumn<bool>("exists");
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<QStringList>("expected"); // "name=value"; %DIR% is the program folder
    QTest::addColumn<QString>("message");      // the one critical message, empty for none

    const QString pastEnd = "Se ha sobrepasado el final del archivo";
    QTest::newRow("missing file")
        << false << QStringList()
        << QStringList{"defdir=%DIR%/download/", "histrut=%DIR%/historial.rtf", "segsv=5",
                       "initstart=1", "ext=" + DefaultExt}
        << "No se encuentra el archivo de configuración %DIR%/corvane.ini";
    QTest::newRow("empty file") << true << QStringList()
                                << QStringList{"defdir=%DIR%/download/", "ext=" + DefaultExt}
                                << pastEnd;
    QTest::newRow("21 lines leave ext empty")
        << true << fullFile()
        << QStringList{"defdir=/srv/bajadas/", "histrut=/srv/historial.rtf", "ext="} << "";
    QTest::newRow("ext read to the end") << true << fullFile() + QStringList{".iso", "", ".rar"}
                                         << QStringList{"ext=.iso||.rar"} << "";
    QTest::newRow("folder gains separator")
        << true << edited({{1, "/srv/descargas"}}) << QStringList{"defdir=/srv/descargas/"} << "";
    QTest::newRow("empty folder line")
        << true << edited({{1, ""}}) << QStringList{"defdir=%DIR%/download/"} << "";
    QTest::newRow("whole lines keep blanks and commas")
        << true << edited({{5, " /opt/a, b/scan "}}) << QStringList{"virus= /opt/a, b/scan "} << "";
    QTest::newRow("empty history line")
        << true << edited({{20, ""}}) << QStringList{"histrut=%DIR%/historial.rtf"} << "";
    // The comma ends the field; what follows it is the next value and everything shifts.
    QTest::newRow("comma in segs")
        << true << edited({{6, "12,5"}})
        << QStringList{"segs=12", "segsv=12", "veces=5", "vecesv=5", "delinc=0"}
        << "Valor no válido en corvane.ini: \"5\" no es 0 ni 1 en una casilla";
    QTest::newRow("padded histsize")
        << true << edited({{21, " 250 "}}) << QStringList{"histsize=250", "hsizet=250"} << "";
    QTest::newRow("lenient numbers") << true << edited({{2, "0 no"}, {12, "15 segundos"}})
                                     << QStringList{"initstart=0", "wait=15", "waitv=15"} << "";
    // The text box follows its spin box only when the value changes.
    QTest::newRow("unchanged spin keeps text") << true << edited({{12, "10 segundos"}})
                                               << QStringList{"wait=10 segundos", "waitv=10"} << "";
    QTest::newRow("all options False")
        << true << edited({{15, "False"}, {17, "False"}})
        << QStringList{"autoact=0", "notact=1", "msgno=0", "msgdialog=1", "msgsys=0"} << "";
    QTest::newRow("last True wins")
        << true << edited({{14, "True"}, {15, "False"}, {16, "True"}, {17, "False"}, {18, "True"}})
        << QStringList{"autoact=1", "notact=0", "msgno=0", "msgdialog=0", "msgsys=1"} << "";
    QTest::newRow("options as numbers")
        << true << edited({{14, "-1"}, {15, "0"}}) << QStringList{"autoact=1", "notact=0"} << "";
    QTest::newRow("truncated keeps what was read")
        << true << edited({{2, " 0 "}, {6, "30"}}).mid(0, 12)
        << QStringList{"defdir=/srv/bajadas/",        "initstart=0",      "segsv=30", "waitv=10",
                       "histrut=%DIR%/historial.rtf", "ext=" + DefaultExt}
        << pastEnd;
    QTest::newRow("garbled option")
        << true << edited({{14, "True"}, {15, "Quizás"}, {16, "True"}})
        << QStringList{"autoact=1", "notact=0", "msgno=0", "msgdialog=1"}
        << "No coinciden los tipos: \"Quizás\" no es un valor lógico";
    QTest::newRow("spin out of range")
        << true << edited({{7, "70"}, {8, " 1 "}})
        << QStringList{"veces=70", "vecesv=5", "delinc=0"}
        << "Valor no válido en corvane.ini: 70 está fuera del intervalo de 0 a 50";
    QTest::newRow("text read as zero is out of range")
        << true << edited({{11, "diez"}}) << QStringList{"maxdesc=diez", "maxdescval=10"}
        << "Valor no válido en corvane.ini: 0 está fuera del intervalo de 1 a 40";
    QTest::newRow("check box neither 0 nor 1")
        << true << edited({{2, " 0 "}, {3, " 2 "}, {4, " 1 "}})
        << QStringList{"initstart=0", "showmsg=0", "exevirus=0"}
        << "Valor no válido en corvane.ini: \"2\" no es 0 ni 1 en una casilla";
}

void TestSettingsModel::reading()
{
    QFETCH(bool, exists);
    QFETCH(QStringList, lines);
    QFETCH(QStringList, expected);
    QFETCH(QString, message);

    // setup
    SettingsFixture f;
    if (exists) {
        QFile file(f.iniPath());
        QVERIFY(file.open(QIODevice::WriteOnly));
        if (!lines.isEmpty())
            file.write((lines.join("\r\n") + "\r\n").toUtf8());
    }
    const Settings *live = &f.model.settings();
    QSignalSpy changed(&f.model, &SettingsModel::changed);

    // action
    QCOMPARE(f.model.load(), message.isEmpty());

    // verify
    message.replace("%DIR%", f.folder());
    QCOMPARE(f.desktop.calls,
             message.isEmpty() ? QStringList() : QStringList{"messageBox|Critical|" + message});
    QCOMPARE(changed.count(), 1);
    QCOMPARE(&f.model.settings(), live);
    const QMap<QString, QString> actual = describe(f.model.settings());
    for (QString item : expected) {
        item.replace("%DIR%", f.folder());
        const QString name = item.section('=', 0, 0);
        QCOMPARE(name + '=' + actual.value(name), item);
    }
}

void TestSettingsModel::roundTrip()
{
    SettingsFixture f;
    SettingsModel &written = f.model;
    written.setText(&Settings::defdir, "/srv/a, b/");
    written.setText(&Settings::virus, "/usr/bin/clam scan");
    QVERIFY(written.setSpin(&Settings::segsv, 60));
    written.setText(&Settings::veces, "7");
    written.setCheck(&Settings::wavs, false);
    written.setCheck(&Settings::exevirus, true);
    written.setOption(&Settings::msgno);
    written.setOption(&Settings::autoact);
    QVERIFY(written.setSpin(&Settings::histsize, 4999));
    written.appendExt(".iso");
    written.removeExt(0);
    QVERIFY(written.save());

    SettingsModel read(ProgramFolder(f.dir.path()), f.desktop, f.history);
    QVERIFY(read.load());
    QMap<QString, QString> expected = describe(written.settings());
    // The text of veces is what the file keeps; its spin box follows it on reading.
    expected["vecesv"] = "7";
    QCOMPARE(describe(read.settings()), expected);
    QVERIFY(f.desktop.calls.isEmpty());
}

void TestSettingsModel::emptyFolderAfterSave()
{
    SettingsFixture f;
    f.model.setText(&Settings::defdir, "");

    QVERIFY(f.model.save());
    QCOMPARE(f.model.settings().defdir, f.folder() + "/download/");
    QFile file(f.iniPath());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll().startsWith("\r\n 1 \r\n"));
}

void TestSettingsModel::writeFailure()
{
    SettingsFixture f("no/such/folder");
    f.model.setText(&Settings::defdir, "");

    QVERIFY(!f.model.save());
    QCOMPARE(f.desktop.callsOf("messageBox").size(), 1);
    QVERIFY(f.desktop.callsOf("messageBox").first().startsWith("Critical|"));
    QCOMPARE(f.history.lines.size(), 1);
    // Writing stopped, so the folder default is not applied either.
    QCOMPARE(f.model.settings().defdir, QString());
}

void TestSettingsModel::spinRanges()
{
    SettingsFixture f;
    for (const SpinSetting &spin : SettingsModel::spins()) {
        const Settings &s = f.model.settings();
        const int before = s.*spin.value;
        QVERIFY(!f.model.setSpin(spin.value, spin.minimum - 1));
        QVERIFY(!f.model.setSpin(spin.value, spin.maximum + 1));
        QCOMPARE(s.*spin.value, before);
        QVERIFY(f.model.setSpin(spin.value, spin.maximum));
        QCOMPARE(s.*spin.text, QString::number(spin.maximum));
        QVERIFY(f.model.setSpin(spin.value, spin.minimum));
        QCOMPARE(s.*spin.text, QString::number(spin.minimum));
    }
    QCOMPARE(SettingsModel::spins().size(), std::size_t(5));
    QVERIFY(!f.model.setSpin(&Settings::wavs, 0));
    QCOMPARE(f.model.settings().wavs, 1);
}

QTEST_GUILESS_MAIN(TestSettingsModel)
#include "tst_settingsmodel.moc"
