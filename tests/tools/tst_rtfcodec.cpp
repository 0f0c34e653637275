#include "historysink.h"
#include "historyview.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using Runs = QList<RtfRun>;

namespace {

constexpr quint32 Red = HistoryColour::Red;
constexpr quint32 Black = HistoryColour::Black;
constexpr quint32 Green = HistoryColour::Green;
constexpr quint32 Blue = 0xFF0000;

// What unrtf, an independent reader, makes of `rtf` as plain lines (it prints Latin-1).
QStringList unrtfLines(const QByteArray &rtf)
{
    QTemporaryDir dir;
    QFile file(dir.filePath("h.rtf"));
    if (!file.open(QIODevice::WriteOnly) || file.write(rtf) != rtf.size())
        return {"(no file)"};
    file.close();
    QProcess unrtf;
    unrtf.start("unrtf", {"--quiet", "--text", "--nopict", file.fileName()});
    if (!unrtf.waitForFinished())
        return {"(unrtf did not run)"};
    const QString out = QString::fromLatin1(unrtf.readAllStandardOutput());
    return out.mid(out.indexOf("-----------------\n") + 18).split('\n');
}

} // namespace

class TestRtfCodec : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void roundTrip_data();
    void roundTrip();
    void independentReader_data();
    void independentReader();
    void otherEditors_data();
    void otherEditors();
    void otherEditorsFile();
    void badInput_data();
    void badInput();
};

void TestRtfCodec::roundTrip_data()
{
    QTest::addColumn<QList<quint32>>("table");
    QTest::addColumn<Runs>("runs");
    QTest::newRow("empty") << QList<quint32>() << Runs();
    QTest::newRow("history lines") << QList<quint32>{Red}
                                   << Runs{{"Iniciado a las 10:00:00 el 05/01/2024", Red},
                                           {"\r\nConfiguración cambiada a las 10:00:05", Black},
                                           {"Se continúa la descarga de /tmp/año.zip", Green},
                                           {"\r\nCerrado a las 11:00:00 el 05/01/2024\r\n", Red}};
    QTest::newRow("markup and tabs") << QList<quint32>() << Runs{{"{\\rtf1}\\par \\'e9\t;", Blue}};
    QTest::newRow("outside Latin-1")
        << QList<quint32>() << Runs{{"€ “x” Ā 日本 😀 \u00a0 \x7f\x01", Black}};
    QTest::newRow("blank lines") << QList<quint32>() << Runs{{"\r\n\r\n  dos\r\n", Green}};
    QTest::newRow("unused colours kept")
        << QList<quint32>{0x123456, Green, 0xFFFFFF} << Runs{{"a", Green}, {"b", Red}};
}

void TestRtfCodec::roundTrip()
{
    QFETCH(QList<quint32>, table);
    QFETCH(Runs, runs);
    const QByteArray rtf = Rtf::write(RtfDocument{table, runs});
    QVERIFY(std::all_of(rtf.begin(), rtf.end(), [](char c) { return uchar(c) < 0x80; }));
    const std::optional<RtfDocument> back = Rtf::read(rtf);
    QVERIFY(back);
    QCOMPARE(describe(back->runs), describe(runs));
    // Written again, it is the same file.
    QCOMPARE(Rtf::write(*back), rtf);
}

void TestRtfCodec::independentReader_data()
{
    QTest::addColumn<Runs>("runs");
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("accents and markup")
        << Runs{{"Configuración cambiada", Black},
                {"\r\nSe continúa la descarga de C:\\x\\{y}.zip\r\n", Green}}
        << QStringList{"Configuración cambiada", "Se continúa la descarga de C:\\x\\{y}.zip", ""};
    // Readers that do not know \uN show its fallback character.
    QTest::newRow("beyond Latin-1") << Runs{{"Canción € ñ", Black}} << QStringList{"Canción ? ñ"};
}

void TestRtfCodec::independentReader()
{
    QFETCH(Runs, runs);
    QTEST(unrtfLines(Rtf::write(RtfDocument{{}, runs})), "lines");
}

void TestRtfCodec::otherEditors_data()
{
    QTest::addColumn<QByteArray>("rtf");
    QTest::addColumn<Runs>("runs");
    QTest::newRow("two fallback characters")
        << QByteArray("{\\rtf1{\\uc2\\u233\\'e9\\'e9x}\\u233?y}") << Runs{{"éxéy", Black}};
    QTest::newRow("a pair of code units")
        << QByteArray("{\\rtf1\\u-10179?\\u-8704?}") << Runs{{"😀", Black}};
    QTest::newRow("backslash at a line end")
        << QByteArray("{\\rtf1 a\\\nb\r\nc}") << Runs{{"a\r\nbc", Black}};
    QTest::newRow("colour ends with its group")
        << QByteArray("{\\rtf1{\\colortbl;\\red255\\green0\\blue0;}a{\\cf1 b}c\\foo9 d}")
        << Runs{{"a", Black}, {"b", Red}, {"cd", Black}};
    QTest::newRow("table without automatic entry")
        << QByteArray("{\\rtf1{\\colortbl\\red0\\green0\\blue255;}\\cf0 a\\cf7 b}")
        << Runs{{"a", Blue}, {"b", Black}};
    QTest::newRow("raw ANSI bytes") << QByteArray("{\\rtf1 a\xf1o \x80}") << Runs{{"año €", Black}};
}

void TestRtfCodec::otherEditors()
{
    QFETCH(QByteArray, rtf);
    QFETCH(Runs, runs);
    const std::optional<RtfDocument> read = Rtf::read(rtf);
    QVERIFY(read);
    QCOMPARE(describe(read->runs), describe(runs));
}

void TestRtfCodec::otherEditorsFile()
{
    // Written by hand as a word processor would: font table, style sheet, information,
    // bookmark, field, a picture with binary data.
    QFile file(qEnvironmentVariable("CORVANE_SOURCE_DIR") + "/tests/tools/data/otro-editor.rtf");
    QVERIFY(file.open(QIODevice::ReadOnly));
    const std::optional<RtfDocument> read = Rtf::read(file.readAll());
    QVERIFY(read);
    QCOMPARE(describe(read->runs),
             describe({{"Iniciado a las 10:00:00 el 05/01/2024\r\n", Red},
                       {"Configuración cambiada a las 10:00:05\r\n", Black},
                       {"Se continúa la descarga de C:\\descargas\\año.zip", Green},
                       {" a las 10:00:06\r\n", Blue},
                       {"Precio:\t5 € y “cita”\r\n", Black},
                       {"enlace", Blue},
                       {"\r\n", Black},
                       {"fin {llaves}\r\n", Red}}));
    QCOMPARE(read->colours, (QList<quint32>{Red, Green, Blue}));
}

void TestRtfCodec::badInput_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<bool>("isRtf");
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << QByteArray() << false << QString();
    QTest::newRow("plain text") << QByteArray("Iniciado a las 10:00:00\r\n") << false << QString();
    QTest::newRow("binary") << QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16) << false
                            << QString();
    QTest::newRow("truncated") << QByteArray("{\\rtf1{\\colortbl;\\red255;}\\cf1 abc\\par de")
                               << true << "abc\r\nde";
    QTest::newRow("cut inside an escape") << QByteArray("{\\rtf1 ab\\'e") << true << "ab";
    QTest::newRow("cut after a backslash") << QByteArray("{\\rtf1 ab\\") << true << "ab";
    QTest::newRow("extra closing braces") << QByteArray("{\\rtf1 a}}}} b") << true << "a";
    QTest::newRow("binary data past the end")
        << QByteArray("{\\rtf1 a\\bin99999 x}") << true << "a";
    QTest::newRow("odd numbers") << QByteArray("{\\rtf1\\uc99999999999 a\\u-b\\cf-9 c}") << true
                                 << "abc";
    QTest::newRow("deep nesting") << QByteArray("{\\rtf1 ") + QByteArray(200000, '{') + "x" << true
                                  << "x";
}

void TestRtfCodec::badInput()
{
    QFETCH(QByteArray, data);
    QFETCH(bool, isRtf);
    const std::optional<RtfDocument> read = Rtf::read(data);
    QCOMPARE(read.has_value(), isRtf);
    QString text;
    for (const RtfRun &run : read ? read->runs : Runs())
        text += run.text;
    QTEST(text, "text");
}

QTEST_GUILESS_MAIN(TestRtfCodec)
#include "tst_rtfcodec.moc"
