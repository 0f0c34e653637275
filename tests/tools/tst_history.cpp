#include "fakedesktop.h"
#include "files.h"
#include "historylog.h"
#include "historytext.h"
#include "historywindow.h"
#include "settings.h"

#include <QPlainTextEdit>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBlock>

using Runs = QList<RtfRun>;

namespace {

constexpr quint32 Red = HistoryColour::Red, Black = HistoryColour::Black,
                  Green = HistoryColour::Green;

// "colour:text | colour:text ...", neighbours of one colour joined, colours 0x00BBGGRR in
// decimal: one description for documents, the log and what its window shows.
QString describe(const Runs &runs)
{
    QStringList parts;
    quint32 colour = 0;
    for (const RtfRun &run : runs) {
        if (run.text.isEmpty())
            continue;
        if (parts.isEmpty() || run.colour != colour)
            parts << QString::number(run.colour) + QLatin1Char(':');
        parts.last() += run.text;
        colour = run.colour;
    }
    return parts.join(QStringLiteral(" | "));
}

// Block separators count as CR LF; the document keeps their format as the next block's.
QString describe(const QTextDocument &document)
{
    const auto colourOf = [](const QTextCharFormat &format) {
        const QColor c = format.foreground().color();
        return quint32(c.red()) | quint32(c.green()) << 8 | quint32(c.blue()) << 16;
    };
    Runs runs;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        for (auto it = block.begin(); !it.atEnd(); ++it)
            runs.append({it.fragment().text(), colourOf(it.fragment().charFormat())});
        if (block.next().isValid())
            runs.append({QStringLiteral("\r\n"), colourOf(block.next().charFormat())});
    }
    return describe(runs);
}

// What our reader makes of a file; "(not RTF)" when it refuses it.
QString described(const QByteArray &rtf)
{
    const std::optional<RtfDocument> document = Rtf::read(rtf);
    return document ? describe(document->runs) : QStringLiteral("(not RTF)");
}

QString textOf(const QByteArray &rtf)
{
    QString text;
    for (const RtfRun &run : Rtf::read(rtf).value_or(RtfDocument()).runs)
        text += run.text;
    return text;
}

// What unrtf, an independent reader, makes of `rtf` as plain lines (it prints Latin-1).
QStringList unrtfLines(const QByteArray &rtf)
{
    QTemporaryDir dir;
    if (!writeFile(dir.filePath("h.rtf"), rtf))
        return {"(no file)"};
    QProcess unrtf;
    unrtf.start("unrtf", {"--quiet", "--text", "--nopict", dir.filePath("h.rtf")});
    if (!unrtf.waitForFinished())
        return {"(unrtf did not run)"};
    const QString out = QString::fromLatin1(unrtf.readAllStandardOutput());
    return out.mid(out.indexOf("-----------------\n") + 18).split('\n');
}

// A history log over a fresh program folder, the scripted desktop and a fixed clock.
struct HistoryFixture
{
    QTemporaryDir dir;
    Settings settings;
    FakeDesktop desktop;
    HistoryLog log{settings, desktop};

    HistoryFixture()
    {
        settings.histrut = path("historial.rtf");
        log.setClock([] { return QDateTime(QDate(2024, 1, 5), QTime(9, 3, 7)); });
    }
    QString path(const QString &name) const { return dir.filePath(name); }
    QByteArray read(const QString &name) const { return readFile(path(name)); }
};

// The lines the fixture's clock gives.
const QString StartLine = QStringLiteral("Iniciado a las 09:03:07 el 05/01/2024");
const QString EndLine = QStringLiteral("Cerrado a las 09:03:07 el 05/01/2024\r\n");

} // namespace

class TestHistory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // What other editors write, and what no editor should: text and colours are kept as far as
    // they go, the rest skipped. Broken log files are read through the log below; the window
    // shows what the log holds (randomLog).
    void reading_data()
    {
        QTest::addColumn<QByteArray>("rtf");
        QTest::addColumn<QString>("runs");
        const auto row = [](const char *name, const QByteArray &rtf, const QString &runs) {
            QTest::newRow(name) << rtf << runs;
        };
        row("two fallback characters", "{\\rtf1{\\uc2\\u233\\'e9\\'e9x}\\u233?y}", "0:éxéy");
        row("colour ends with its group",
            "{\\rtf1{\\colortbl;\\red255\\green0\\blue0;}a{\\cf1 b}c\\foo9 d}",
            "0:a | 255:b | 0:cd");
        row("table without automatic entry",
            "{\\rtf1{\\colortbl\\red0\\green0\\blue255;}\\cf0 a\\cf7 b}", "16711680:a | 0:b");
        row("raw ANSI bytes", "{\\rtf1 a\xf1o \x80}", "0:año €");
        row("cut inside an escape", "{\\rtf1 ab\\'e", "0:ab");
        row("binary data past the end", "{\\rtf1 a\\bin99999 x}", "0:a");
        row("deep nesting", "{\\rtf1 " + QByteArray(200000, '{') + "x", "0:x");
        // Written by hand as a word processor would: font table, style sheet, information,
        // bookmark, field, a picture with binary data.
        row("another editor's file",
            readFile(qEnvironmentVariable("CORVANE_SOURCE_DIR") +
                     "/tests/tools/data/otro-editor.rtf"),
            "255:Iniciado a las 10:00:00 el 05/01/2024\r\n"
            " | 0:Configuración cambiada a las 10:00:05\r\n"
            " | 47872:Se continúa la descarga de C:\\descargas\\año.zip"
            " | 16711680: a las 10:00:06\r\n | 0:Precio:\t5 € y “cita”\r\n | 16711680:enlace"
            " | 0:\r\n | 255:fin {llaves}\r\n");
    }

    void reading()
    {
        QFETCH(QByteArray, rtf);
        QTEST(described(rtf), "runs");
    }

    // Each line is appended after a line break, in black. "#over:N" stands for a line of y's
    // just long enough to put the log N characters over the limit.
    void sizeLimit_data()
    {
        QTest::addColumn<int>("histsize");
        QTest::addColumn<QStringList>("lines");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("messages");
        // The start line's 37 characters weigh 48 in RTF (colour word and \par): after it goes
        // the log is 3 over, which "b" alone would fix, but the search goes on from position
        // 38 and takes b, c and the x's with it.
        QTest::newRow("several removed at once by the carried position")
            << 1 << QStringList{"b", "c", QString(60, 'x'), "#over:51"} << "#fill" << 0;
        QTest::newRow("one line longer than the limit")
            << 1 << QStringList{QString(2000, 'x')} << QString(2000, 'x') << 1;
        QTest::newRow("histsize 0 ends in the message")
            << 0 << QStringList{"uno", "dos"} << "dos" << 1;
    }

    void sizeLimit()
    {
        QFETCH(int, histsize);
        QFETCH(QStringList, lines);
        QFETCH(QString, text);
        HistoryFixture f;
        f.settings.histsize = histsize;
        f.log.open();
        QString filled;
        for (const QString &line : std::as_const(lines)) {
            f.log.append("\r\n" + (line.startsWith("#over:") ? QString() : line), Black);
            // The line before is black too, so the y's need no colour word of their own.
            if (line.startsWith("#over:")) {
                filled.fill('y', histsize * 1024 + line.mid(6).toInt() - f.log.rtfLength());
                f.log.append(filled, Black);
            }
        }
        QCOMPARE(f.log.text(), text.replace("#fill", filled));
        const QStringList messages = f.desktop.callsOf("messageBox");
        QTEST(int(messages.size()), "messages");
        for (const QString &message : messages)
            QVERIFY2(message.startsWith("Critical|Argumento no válido"), qPrintable(message));
    }

    // Whatever is appended, trimmed and cleared, the length kept equals that of the file written,
    // which is ASCII, reads back as the log and is written again the same; the window shows
    // exactly the log, not to be changed.
    void randomLog()
    {
        HistoryFixture f;
        f.settings.histsize = 1;
        HistoryWindow window(f.log);
        QVERIFY(window.findChild<QPlainTextEdit *>("texto")->isReadOnly());
        const QTextDocument &shown = *window.findChild<QPlainTextEdit *>("texto")->document();
        QRandomGenerator random(1);
        const QStringList words{"Descargando", "ñandú", "{x}",  "C:\\dir\\",  "\\par \\'e9",
                                "\t",          "€",     "😀",    "“x” Ā 日本", "\u00a0\x7f\x01",
                                "\r",          "\n",    "\r\n", " ",          "a las",
                                "99"};
        const QList<quint32> colours{Red, Black, Green, HistoryColour::DarkRed, 0x123456};
        for (int i = 0; i < 400; ++i) {
            QString line = random.bounded(3) ? QStringLiteral("\r\n") : QString();
            for (int w = int(random.bounded(12)); w >= 0; --w)
                line += words[random.bounded(words.size())];
            if (random.bounded(60) == 0)
                f.log.clear();
            else
                f.log.append(line, colours[random.bounded(colours.size())]);
            const QByteArray written = Rtf::write(f.log.document());
            QCOMPARE(f.log.rtfLength(), written.size());
            QVERIFY(std::all_of(written.begin(), written.end(),
                                [](char c) { return uchar(c) < 0x80; }));
            QCOMPARE(described(written), describe(f.log.document().runs));
            QCOMPARE(Rtf::write(Rtf::read(written).value()), written);
            QCOMPARE(describe(shown), describe(f.log.document().runs));
        }
        QVERIFY(f.log.rtfLength() <= 1024);
    }

    void runAfterRun()
    {
        HistoryFixture f;
        // The first line opens the log. The inactive window's lines have no line break: they run
        // on after the start line.
        f.log.append("Se continúa la descarga de C:\\d\\{año}.zip a las 09:03:08", Green);
        f.log.append("\r\nDescargando http://h/€.zip a /d/a.zip", Black);
        QVERIFY(f.log.close());
        f.log.append("\r\nperdida", Black);
        // An independent reader sees the same lines, accents included; for what Latin-1 lacks it
        // shows the fallback character.
        QCOMPARE(
            unrtfLines(f.read("historial.rtf")),
            (QStringList{StartLine + "Se continúa la descarga de C:\\d\\{año}.zip a las 09:03:08",
                         "Descargando http://h/?.zip a /d/a.zip", EndLine.chopped(2), ""}));

        // The next run starts where the last ended, on a line of its own.
        HistoryLog second(f.settings, f.desktop);
        second.setClock([] { return QDateTime(QDate(2024, 12, 31), QTime(23, 59, 59)); });
        second.open();
        QCOMPARE(describe(second.document().runs),
                 "255:" + StartLine +
                     " | 47872:Se continúa la descarga de C:\\d\\{año}.zip a las "
                     "09:03:08\r\n | 0:Descargando http://h/€.zip a /d/a.zip\r\n | 255:" +
                     EndLine + "Iniciado a las 23:59:59 el 31/12/2024");
        QVERIFY(f.desktop.calls.isEmpty());

        // A copy saved where the person chooses; a cancelled dialog saves nothing.
        f.desktop.fileAnswers = {f.path("copia.rtf"), QString()};
        QVERIFY(second.savehist());
        QCOMPARE(f.read("copia.rtf"), Rtf::write(second.document()));
        QVERIFY(!second.savehist());
        QCOMPARE(f.desktop.callsOf("saveFileDialog"), QStringList({"|*.rtf", "|*.rtf"}));
    }

    // histrut in a folder that holds a folder "carpeta" and an older "historial.rtf.bak"; `content`
    // at histrut unless null. A message ending in ": " goes on with the system's description.
    void badFile_data()
    {
        QTest::addColumn<QString>("histrut");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("message");
        const auto row = [](const char *name, const QString &histrut, const QByteArray &content,
                            const QString &text, const QString &message = {}) {
            QTest::newRow(name) << histrut << content << text << message;
        };
        const QString setAside = "Exclamation|El archivo de historial %1/historial.rtf no es un "
                                 "documento RTF. Se ha guardado como %1/historial.rtf.1.bak y el "
                                 "historial empieza vacío.";
        const QString unsaved = "Critical|No se ha podido guardar el historial en %1: ";
        row("truncated", "historial.rtf",
            "{\\rtf1{\\colortbl;\\red0\\green0\\blue255;}\\cf1 uno\\par do", "uno\r\ndo");
        // Kept under a free name, never overwritten.
        row("binary", "historial.rtf", QByteArray::fromHex("7f454c46020101000000"), "", setAside);
        row("a folder at histrut", "carpeta", {}, "", unsaved.arg("%1/carpeta"));
    }

    // The log starts from what could be read; what cannot be saved is said.
    void badFile()
    {
        QFETCH(QString, histrut);
        QFETCH(QByteArray, content);
        QFETCH(QString, text);
        QFETCH(QString, message);
        HistoryFixture f;
        QVERIFY(QDir(f.dir.path()).mkdir("carpeta"));
        QVERIFY(writeFile(f.path("historial.rtf.bak"), "older"));
        if (!content.isNull())
            QVERIFY(writeFile(f.path("historial.rtf"), content));
        f.settings.histrut = f.path(histrut);
        f.log.open();
        QCOMPARE(f.log.text(), text + StartLine);
        QCOMPARE(f.log.close(), !message.startsWith("Critical"));

        const QStringList messages = f.desktop.callsOf("messageBox");
        QCOMPARE(messages.size(), message.isEmpty() ? 0 : 1);
        message.replace("%1", f.dir.path());
        if (!message.isEmpty())
            QVERIFY2(message.endsWith(": ") ? messages[0].startsWith(message)
                                            : messages[0] == message,
                     qPrintable(messages[0]));
        if (!message.startsWith("Critical"))
            QCOMPARE(textOf(f.read("historial.rtf")), text + StartLine + "\r\n" + EndLine);
        QCOMPARE(f.read("historial.rtf.1.bak"),
                 message.contains(".1.bak") ? content : QByteArray());
        QCOMPARE(f.read("historial.rtf.bak"), "older");
    }
};

QTEST_MAIN(TestHistory)
#include "tst_history.moc"
