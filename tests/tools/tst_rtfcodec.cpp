#include "historysink.h"
#include "rtfcodec.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using Runs = QList<RtfRun>;
Q_DECLARE_METATYPE(RtfRun)

namespace {

constexpr quint32 Red = HistoryColour::Red;
constexpr quint32 Black = HistoryColour::Black;
constexpr quint32 Green = HistoryColour::Green;
constexpr quint32 Blue = 0xFF0000;

// Neighbouring runs of one colour read back as one.
Runs merged(const Runs &runs)
{
    Runs out;
    for (const RtfRun &run : runs) {
        if (run.text.isEmpty())
            continue;
        if (!out.isEmpty() && out.last().colour == run.colour)
            out.last().text += run.text;
        else
            out.append(run);
    }
    return out;
}

QString describe(const Runs &runs)
{
    QStringList parts;
    for (const RtfRun &run : runs)
        parts << QString::number(run.colour, 16) + QLatin1Char(':') + run.text;
    return parts.join(QStringLiteral(" | "));
}

// What unrtf, an independent reader, makes of `rtf` as plain lines (it prints Latin-1).
QStringList unrtfLines(const QByteArray &rtf)
{
    QTemporaryDir dir;
    QFile file(dir.filePath("h.rtf"));
    if (!file.open(QIODevice::WriteOnly) || file.write(rtf) != rtf.size())
        return {QStringLiteral("(no file)")};
    file.close();
    QProcess unrtf;
    unrtf.setWorkingDirectory(dir.path());
    unrtf.start(QStringLiteral("unrtf"), {"--quiet", "--text", "--nopict", file.fileName()});
    if (!unrtf.waitForFinished())
        return {QStringLiteral("(unrtf did not run)")};
    const QString out = QString::fromLatin1(unrtf.readAllStandardOutput());
    const qsizetype body = out.indexOf(QStringLiteral("-----------------\n"));
    return out.mid(body + 18).split(QLatin1Char('\n'));
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
    void lengthsAddUp();
};

void TestRtfCodec::roundTrip_data()
{
    QTest::addColumn<QList<quint32>>("table");
    QTest::addColumn<Runs>("runs");
    QTest::newRow("empty") << QList<quint32>() << Runs();
    QTest::newRow("history lines")
        << QList<quint32>{Red}
        << Runs{{"Iniciado a las 10:00:00 el 05/01/2024", Red},
                {"\r\nConfiguración cambiada a las 10:00:05", Black},
                {"Se continúa la descarga de /tmp/año.zip a las 10:00:06", Green},
                {"\r\nCerrado a las 11:00:00 el 05/01/2024\r\n", Red}};
    QTest::newRow("markup characters and tabs")
        << QList<quint32>() << Runs{{"{\\rtf1 a}\\par \\'e9 \\u233? \t;", Blue}};
    QTest::newRow("outside Latin-1")
        << QList<quint32>() << Runs{{"€ “comillas” ÿĀ 日本語 😀 \u00a0 \x7f\x01 \u2122", Black}};
    QTest::newRow("blank lines and leading blanks")
        << QList<quint32>() << Runs{{"\r\n\r\n  dos\r\n \r\n", Green}, {" ", Red}};
    QTest::newRow("one colour in several runs")
        << QList<quint32>() << Runs{{"a", Red}, {"b\r\n", Red}, {"c", Black}, {"d", Red}};
    QTest::newRow("unused colours kept in the table")
        << QList<quint32>{0x123456, Green, 0xFFFFFF} << Runs{{"x", Green}};
}

void TestRtfCodec::roundTrip()
{
    QFETCH(QList<quint32>, table);
    QFETCH(Runs, runs);
    const QByteArray rtf = Rtf::write(RtfDocument{table, runs});
    for (const char c : rtf)
        QVERIFY2(uchar(c) < 0x80, "RTF is 7-bit text");
    const std::optional<RtfDocument> back = Rtf::read(rtf);
    QVERIFY(back);
    QCOMPARE(describe(back->runs), describe(merged(runs)));
    QList<quint32> expectedTable = table;
    for (const RtfRun &run : std::as_const(runs)) {
        if (!expectedTable.contains(run.colour))
            expectedTable.append(run.colour);
    }
    QCOMPARE(back->colours, expectedTable);
    // Written again, it is the same file.
    QCOMPARE(Rtf::write(*back), rtf);
}

void TestRtfCodec::independentReader_data()
{
    QTest::addColumn<Runs>("runs");
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("accents") << Runs{{"Configuración cambiada a las 10:00:05", Black},
                                     {"\r\nSe continúa la descarga de /tmp/año.zip", Green}}
                             << QStringList{"Configuración cambiada a las 10:00:05",
                                            "Se continúa la descarga de /tmp/año.zip"};
    QTest::newRow("start and closing lines")
        << Runs{{"Iniciado a las 10:00:00 el 05/01/2024", Red},
                {"\r\nCancelada la descarga de C:\\x\\{y}.zip a las 10:00:01",
                 HistoryColour::DarkRed},
                {"\r\nCerrado a las 11:00:00 el 05/01/2024\r\n", Red}}
        << QStringList{"Iniciado a las 10:00:00 el 05/01/2024",
                       "Cancelada la descarga de C:\\x\\{y}.zip a las 10:00:01",
                       "Cerrado a las 11:00:00 el 05/01/2024", ""};
    // Readers that do not know \uN show its fallback character.
    QTest::newRow("beyond Latin-1") << Runs{{"Canción € ñ", Black}} << QStringList{"Canción ? ñ"};
}

void TestRtfCodec::independentReader()
{
    QFETCH(Runs, runs);
    QFETCH(QStringList, lines);
    QCOMPARE(unrtfLines(Rtf::write(RtfDocument{{}, runs})), lines);
}

void TestRtfCodec::otherEditors_data()
{
    QTest::addColumn<QByteArray>("rtf");
    QTest::addColumn<Runs>("runs");
    QTest::newRow("two fallback characters")
        << QByteArray("{\\rtf1{\\uc2\\u233\\'e9\\'e9x}\\u233?y}") << Runs{{"éxéy", Black}};
    QTest::newRow("fallback of none") << QByteArray("{\\rtf1\\uc0\\u241 o}") << Runs{{"ño", Black}};
    QTest::newRow("negative code units make a pair")
        << QByteArray("{\\rtf1\\u-10179?\\u-8704?}") << Runs{{"😀", Black}};
    QTest::newRow("backslash at a line end is a paragraph")
        << QByteArray("{\\rtf1 a\\\nb}") << Runs{{"a\r\nb", Black}};
    QTest::newRow("source line breaks are not text")
        << QByteArray("{\\rtf1 a\r\nb\nc}") << Runs{{"abc", Black}};
    QTest::newRow("unknown words skipped")
        << QByteArray("{\\rtf1\\foo12\\barbaz a\\qux-3 b}") << Runs{{"ab", Black}};
    QTest::newRow("colour ends with its group")
        << QByteArray("{\\rtf1{\\colortbl;\\red255\\green0\\blue0;}a{\\cf1 b}c}")
        << Runs{{"a", Black}, {"b", Red}, {"c", Black}};
    QTest::newRow("table without automatic entry")
        << QByteArray("{\\rtf1{\\colortbl\\red0\\green0\\blue255;}\\cf0 a\\cf7 b}")
        << Runs{{"a", Blue}, {"b", Black}};
    QTest::newRow("raw ANSI bytes") << QByteArray("{\\rtf1 a\xf1o \x80}") << Runs{{"año €", Black}};
    QTest::newRow("symbols") << QByteArray("{\\rtf1\\lquote a\\rquote\\~\\emdash\\_}")
                             << Runs{{"‘a’\u00a0—-", Black}};
    QTest::newRow("ignorable destination")
        << QByteArray("{\\rtf1{\\*\\unknown {nested} text}a}") << Runs{{"a", Black}};
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
    // bookmarks, a field, a picture with binary data.
    QFile file(qEnvironmentVariable("CORVANE_SOURCE_DIR") + "/tests/tools/data/otro-editor.rtf");
    QVERIFY(file.open(QIODevice::ReadOnly));
    const std::optional<RtfDocument> read = Rtf::read(file.readAll());
    QVERIFY(read);
    const Runs expected{{"Iniciado a las 10:00:00 el 05/01/2024\r\n", Red},
                        {"Configuración cambiada a las 10:00:05\r\n", Black},
                        {"Se continúa la descarga de C:\\descargas\\año.zip", Green},
                        {" a las 10:00:06\r\n", Blue},
                        {"Precio:\t5 € y “cita”\r\n", Black},
                        {"enlace", Blue},
                        {"\r\n", Black},
                        {"fin {llaves}\r\n", Red}};
    QCOMPARE(describe(read->runs), describe(expected));
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
    QTest::newRow("leading blanks") << QByteArray(" \r\n{\\rtf1 a}") << true << "a";
    QTest::newRow("truncated") << QByteArray("{\\rtf1{\\colortbl;\\red255;}\\cf1 abc\\par de")
                               << true << "abc\r\nde";
    QTest::newRow("cut inside a word") << QByteArray("{\\rtf1 ab\\pa") << true << "ab";
    QTest::newRow("cut inside an escape") << QByteArray("{\\rtf1 ab\\'e") << true << "ab";
    QTest::newRow("cut after a backslash") << QByteArray("{\\rtf1 ab\\") << true << "ab";
    QTest::newRow("extra closing braces") << QByteArray("{\\rtf1 a}}}} b") << true << "a";
    QTest::newRow("unclosed groups") << QByteArray("{\\rtf1 {{{a") << true << "a";
    QTest::newRow("binary data past the end")
        << QByteArray("{\\rtf1 a\\bin999999 xyz}") << true << "a";
    QTest::newRow("unicode without a number") << QByteArray("{\\rtf1 a\\u-b\\u}") << true << "ab";
    QTest::newRow("huge numbers") << QByteArray("{\\rtf1\\uc99999999999 a\\cf-99999 b}") << true
                                  << "ab";
    QTest::newRow("deep nesting") << QByteArray("{\\rtf1 ") + QByteArray(200000, '{') + "x" << true
                                  << "x";
}

void TestRtfCodec::badInput()
{
    QFETCH(QByteArray, data);
    QFETCH(bool, isRtf);
    const std::optional<RtfDocument> read = Rtf::read(data);
    QCOMPARE(read.has_value(), isRtf);
    if (read) {
        QString text;
        for (const RtfRun &run : read->runs)
            text += run.text;
        QTEST(text, "text");
    }
}

void TestRtfCodec::lengthsAddUp()
{
    // The written length is the sum of its parts, which the history log keeps up to date.
    const QList<quint32> table{Red, Black, Green};
    const Runs runs{{"uno\r\n", Red}, {"dós {x}\\\t€\r\n", Black}, {"tres", Black}, {"!", Green}};
    qsizetype length = Rtf::header(table).size() + Rtf::Trailer.size();
    std::optional<quint32> colour;
    for (const RtfRun &run : runs) {
        if (colour != run.colour)
            length += Rtf::colourWord(table.indexOf(run.colour)).size();
        colour = run.colour;
        length += Rtf::textLength(run.text);
    }
    QCOMPARE(Rtf::write(RtfDocument{table, runs}).size(), length);
}

QTEST_GUILESS_MAIN(TestRtfCodec)
#include "tst_rtfcodec.moc"
