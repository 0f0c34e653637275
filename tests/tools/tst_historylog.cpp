#include "historyfixture.h"
#include "historytext.h"
#include "historyview.h"

#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>

namespace {

constexpr quint32 Red = HistoryColour::Red;
constexpr quint32 Black = HistoryColour::Black;
constexpr quint32 Green = HistoryColour::Green;

QString textOfFile(const QByteArray &rtf)
{
    QString text;
    if (const std::optional<RtfDocument> document = Rtf::read(rtf)) {
        for (const RtfRun &run : document->runs)
            text += run.text;
    }
    return text;
}

} // namespace

class TestHistoryLog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sizeLimit_data();
    void sizeLimit();
    void lengthKeptUpToDate_data();
    void lengthKeptUpToDate();
    void runAfterRun();
    void formatoSpain_data();
    void formatoSpain();
    void badFile_data();
    void badFile();
    void hugeFile();
    void saveFailure_data();
    void saveFailure();
    void savehistAndDelhist();
};

// Each line is appended after a line break, in black. "#over:N" stands for a line of y's
// just long enough to put the log N characters over the limit.
void TestHistoryLog::sizeLimit_data()
{
    QTest::addColumn<int>("histsize");
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("messages");
    const QString fill = QStringLiteral("#fill");
    QTest::newRow("limit never reached")
        << 10 << QStringList{"uno", "dos", "tres"} << StartLine + "\r\nuno\r\ndos\r\ntres" << 0;
    QTest::newRow("one line removed")
        << 1 << QStringList{"uno", "#over:10"} << "uno\r\n" + fill << 0;
    // The start line's 37 characters weigh 48 in RTF (colour word and \par): after it goes
    // the log is 3 over, which "b" alone would fix, but the search goes on from position
    // 38 and takes b, c and the x's with it.
    QTest::newRow("several removed at once by the carried position")
        << 1 << QStringList{"b", "c", QString(60, 'x'), "#over:51"} << fill << 0;
    QTest::newRow("search position past the short lines")
        << 1 << QStringList{"b", "c", "#over:51"} << "b\r\nc\r\n" + fill << 1;
    QTest::newRow("one line longer than the limit")
        << 1 << QStringList{QString(2000, 'x')} << QString(2000, 'x') << 1;
    QTest::newRow("histsize 0 ends in the message") << 0 << QStringList{"uno", "dos"} << "dos" << 1;
}

void TestHistoryLog::sizeLimit()
{
    QFETCH(int, histsize);
    QFETCH(QStringList, lines);
    QFETCH(QString, text);
    HistoryFixture f;
    f.settings.histsize = histsize;
    f.log.open();
    QString filled;
    for (const QString &line : std::as_const(lines)) {
        if (!line.startsWith("#over:")) {
            f.log.append("\r\n" + line, Black);
            continue;
        }
        f.log.append("\r\n", Black);
        // The line before is black too, so the y's need no colour word of their own.
        const qint64 length = histsize * 1024 + line.mid(6).toInt() - f.log.rtfLength();
        filled = QString(length, 'y');
        f.log.append(filled, Black);
    }
    QCOMPARE(f.log.text(), QString(text).replace("#fill", filled));
    const QStringList messages = f.desktop.callsOf("messageBox");
    QTEST(int(messages.size()), "messages");
    for (const QString &message : messages)
        QVERIFY2(message.startsWith("Critical|Argumento no válido"), qPrintable(message));
}

void TestHistoryLog::lengthKeptUpToDate_data()
{
    QTest::addColumn<quint32>("seed");
    QTest::addColumn<int>("histsize");
    for (quint32 seed : {1u, 2u, 3u})
        QTest::addRow("seed %u, 1 Kbyte", seed) << seed << 1;
    QTest::newRow("seed 4, 3 Kbytes") << 4u << 3;
}

void TestHistoryLog::lengthKeptUpToDate()
{
    // Whatever is appended and trimmed, the length kept equals that of the file written, and
    // the file reads back as the text.
    QFETCH(quint32, seed);
    QFETCH(int, histsize);
    HistoryFixture f;
    f.settings.histsize = histsize;
    QRandomGenerator random(seed);
    const QStringList words{"Descargando", "ñandú", "{x}",  "C:\\dir\\", "\t",    "€", "😀",
                            "\r",          "\n",    "\r\n", " ",         "a las", "99"};
    const QList<quint32> colours{Red, Black, Green, HistoryColour::DarkRed, 0x123456};
    for (int i = 0; i < 400; ++i) {
        QString line = random.bounded(3) ? QStringLiteral("\r\n") : QString();
        for (int w = int(random.bounded(12)); w >= 0; --w)
            line += words[random.bounded(words.size())];
        f.log.append(line, colours[random.bounded(colours.size())]);
        const QByteArray written = Rtf::write(f.log.document());
        QCOMPARE(f.log.rtfLength(), written.size());
        QCOMPARE(textOfFile(written), f.log.text());
    }
    QVERIFY(f.log.rtfLength() <= f.settings.histsize * 1024);
}

void TestHistoryLog::runAfterRun()
{
    HistoryFixture f;
    // The first line opens the log. The inactive window's lines have no line break: they run
    // on after the start line.
    f.log.append("Se continúa la descarga de /d/a.zip a las 09:03:08", Green);
    f.log.append("\r\nDescargando http://h/a.zip a /d/a.zip", Black);
    QVERIFY(f.log.close());
    f.log.append("\r\nperdida", Black);
    const QString first = StartLine + "Se continúa la descarga de /d/a.zip a las 09:03:08\r\n"
                                      "Descargando http://h/a.zip a /d/a.zip\r\n"
                                      "Cerrado a las 09:03:07 el 05/01/2024\r\n";
    QCOMPARE(textOfFile(f.readFile("historial.rtf")), first);

    // The next run starts where the last ended, on a line of its own.
    HistoryLog second(f.settings, f.desktop);
    second.setClock([] { return QDateTime(QDate(2024, 12, 31), QTime(23, 59, 59)); });
    second.open();
    QCOMPARE(describe(second.document().runs),
             "255:" + StartLine +
                 " | 47872:Se continúa la descarga de /d/a.zip a las 09:03:08\r\n"
                 " | 0:Descargando http://h/a.zip a /d/a.zip\r\n"
                 " | 255:Cerrado a las 09:03:07 el 05/01/2024\r\n"
                 "Iniciado a las 23:59:59 el 31/12/2024");
    QVERIFY(f.desktop.calls.isEmpty());
}

void TestHistoryLog::formatoSpain_data()
{
    QTest::addColumn<QString>("date");
    QTest::addColumn<QString>("spanish");
    QTest::newRow("month first") << QString("12/31/1999") << QString("31/12/1999");
    // Cut by position, never parsed.
    QTest::newRow("short day and month") << QString("1/5/2024") << QString("/2/1//2024");
    QTest::newRow("empty") << QString() << QString("//");
}

void TestHistoryLog::formatoSpain()
{
    QFETCH(QString, date);
    QTEST(FormatoSpain(date), "spanish");
}

void TestHistoryLog::badFile_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("setAside");
    QTest::newRow("empty file") << QByteArray() << QString() << false;
    QTest::newRow("truncated")
        << QByteArray("{\\rtf1{\\colortbl;\\red0\\green0\\blue255;}\\cf1 uno\\par do")
        << "uno\r\ndo" << false;
    QTest::newRow("unbalanced braces") << QByteArray("{\\rtf1 uno\\par}}}{dos") << "uno\r\n"
                                       << false;
    QTest::newRow("binary") << QByteArray::fromHex("7f454c46020101000000") << QString() << true;
    QTest::newRow("plain text") << QByteArray("Iniciado a las 10:00\r\n") << QString() << true;
}

void TestHistoryLog::badFile()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, text);
    QFETCH(bool, setAside);
    HistoryFixture f;
    f.writeFile("historial.rtf", content);
    f.writeFile("historial.rtf.bak", "older");
    f.log.open();
    QCOMPARE(f.log.text(), text + StartLine);
    if (setAside) {
        // Kept under a free name, never overwritten.
        QCOMPARE(f.desktop.callsOf("messageBox"),
                 QStringList{"Exclamation|El archivo de historial " + f.path("historial.rtf") +
                             " no es un documento RTF. Se ha guardado como " +
                             f.path("historial.rtf.1.bak") + " y el historial empieza vacío."});
        QCOMPARE(f.readFile("historial.rtf.1.bak"), content);
        QCOMPARE(f.readFile("historial.rtf.bak"), QByteArray("older"));
    } else {
        QVERIFY(f.desktop.calls.isEmpty());
    }
    QVERIFY(f.log.close());
    QCOMPARE(textOfFile(f.readFile("historial.rtf")),
             text + StartLine + "\r\nCerrado a las 09:03:07 el 05/01/2024\r\n");
}

void TestHistoryLog::hugeFile()
{
    // 50 MB of log with a 10 Kbyte limit: opening trims it to the last lines.
    HistoryFixture f;
    const QString line = QStringLiteral("Descargando http://servidor/archivo.zip a /descargas/"
                                        "archivo.zip a las 10:00:00\r\n");
    const QString all = line.repeated(50'000'000 / int(Rtf::textLength(line)));
    f.writeFile("historial.rtf", Rtf::write(RtfDocument{{}, {{all, Black}, {"última", Green}}}));
    f.log.open();
    QVERIFY(f.log.rtfLength() <= 10 * 1024);
    QVERIFY(f.log.text().endsWith(line + "última" + StartLine));
    QVERIFY(f.log.close());
    QCOMPARE(f.readFile("historial.rtf").size(), f.log.rtfLength());
}

void TestHistoryLog::saveFailure_data()
{
    QTest::addColumn<QString>("histrut");
    QTest::newRow("a folder at histrut") << "carpeta";
    QTest::newRow("folder that cannot exist") << "archivo/historial.rtf";
    QTest::newRow("empty histrut") << "";
}

void TestHistoryLog::saveFailure()
{
    QFETCH(QString, histrut);
    HistoryFixture f;
    QVERIFY(QDir(f.dir.path()).mkdir("carpeta"));
    f.writeFile("archivo", "no es una carpeta");
    f.settings.histrut = histrut.isEmpty() ? QString() : f.path(histrut);
    f.log.open();
    QCOMPARE(f.log.text(), StartLine);
    QVERIFY(!f.log.close());
    const QStringList messages = f.desktop.callsOf("messageBox");
    QCOMPARE(messages.size(), 1);
    QVERIFY2(messages[0].startsWith("Critical|No se ha podido guardar el historial en " +
                                    f.settings.histrut + ": "),
             qPrintable(messages[0]));
    QCOMPARE(f.readFile("archivo"), QByteArray("no es una carpeta"));
}

void TestHistoryLog::savehistAndDelhist()
{
    HistoryFixture f;
    f.log.append("\r\nConfiguración cambiada a las 09:03:08", Black);
    f.desktop.fileAnswers = {f.path("copia.rtf"), QString()};
    QVERIFY(f.log.savehist());
    QCOMPARE(f.readFile("copia.rtf"), Rtf::write(f.log.document()));
    QVERIFY(!f.log.savehist()); // cancelled
    QCOMPARE(f.desktop.callsOf("saveFileDialog"), QStringList({"|*.rtf", "|*.rtf"}));

    QSignalSpy reset(&f.log, &HistoryLog::reset);
    f.log.clear();
    QCOMPARE(reset.size(), 1);
    QCOMPARE(f.log.text(), QString());
    f.log.append("\r\nDescargando z a w", Green);
    QVERIFY(f.log.close());
    QCOMPARE(textOfFile(f.readFile("historial.rtf")),
             "\r\nDescargando z a w\r\nCerrado a las 09:03:07 el 05/01/2024\r\n");
    QCOMPARE(QDir(f.dir.path()).entryList(QDir::Files),
             QStringList({"copia.rtf", "historial.rtf"}));
}

QTEST_GUILESS_MAIN(TestHistoryLog)
#include "tst_historylog.moc"
