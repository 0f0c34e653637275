#include "failure.h"
#include "textfile.h"
#include "texts.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class TestTextFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void writtenBytes();
    void atomicReplace();
    void fields_data();
    void fields();
    void linesAndEnd();
    void booleans_data();
    void booleans();
    void sizeTexts_data();
    void sizeTexts();
    void elapsed();
};

// The list files' own layout is checked byte for byte in tst_lists; here what they do not hold.
void TestTextFile::writtenBytes()
{
    TextFileWriter writer;
    writer.line(QStringLiteral("http://h/ñ.zip"));
    writer.number(-3);
    QCOMPARE(writer.bytes(), QByteArray("http://h/\xc3\xb1.zip\r\n-3 \r\n"));
    TextFileReader reader(writer.bytes());
    QCOMPARE(reader.readLine(), QStringLiteral("http://h/ñ.zip"));
    QCOMPARE(leadingNumber(reader.readField()), -3);
    QVERIFY(reader.atEnd());
}

void TestTextFile::atomicReplace()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("lista.dwn"));
    QFile old(path);
    QVERIFY(old.open(QIODevice::WriteOnly));
    old.write("a much longer old content that must not survive\r\n");
    old.close();

    TextFileWriter writer;
    writer.line(QStringLiteral("new"));
    writer.commit(path);
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("new\r\n"));

    QVERIFY_THROWS_EXCEPTION(Failure, writer.commit(dir.filePath(QStringLiteral("no/such/f"))));
    QVERIFY_THROWS_EXCEPTION(Failure, TextFileReader::open(dir.filePath(QStringLiteral("nada"))));
}

void TestTextFile::fields_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QStringList>("fields");
    QTest::newRow("comma cuts, next read goes on")
        << QByteArray("12,5\r\n7\r\n") << QStringList{"12", "5", "7"};
    QTest::newRow("quoted keeps comma")
        << QByteArray("\"a, b\" \r\nx\r\n") << QStringList{"a, b", "x"};
    QTest::newRow("lone LF ends") << QByteArray("a\nb") << QStringList{"a", "b"};
    QTest::newRow("missing last line end") << QByteArray("1\r\nTrue") << QStringList{"1", "True"};
}

void TestTextFile::fields()
{
    QFETCH(QByteArray, content);
    QFETCH(QStringList, fields);
    TextFileReader reader(content);
    QStringList read;
    while (!reader.atEnd())
        read.append(reader.readField());
    QCOMPARE(read, fields);
    QVERIFY_THROWS_EXCEPTION(Failure, reader.readField());
}

void TestTextFile::linesAndEnd()
{
    TextFileReader reader(QByteArray("  C:\\a, b  \r\n\r\nlast"));
    QCOMPARE(reader.readLine(), QStringLiteral("  C:\\a, b  "));
    QCOMPARE(reader.readLine(), QString());
    QCOMPARE(reader.readLine(), QStringLiteral("last"));
    QVERIFY(reader.atEnd());
    QVERIFY_THROWS_EXCEPTION(Failure, reader.readLine());
}

void TestTextFile::booleans_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("value"); // -1: not a boolean
    QTest::newRow("True") << "True" << 1;
    QTest::newRow("false lower") << "false" << 0;
    QTest::newRow("number") << "-1" << 1;
    QTest::newRow("zero") << "0" << 0;
    QTest::newRow("word") << "Tru" << -1;
    QTest::newRow("empty") << "" << -1;
}

void TestTextFile::booleans()
{
    QFETCH(QString, text);
    QFETCH(int, value);
    if (value < 0)
        QVERIFY_THROWS_EXCEPTION(Failure, toBoolean(text));
    else
        QCOMPARE(toBoolean(text), value == 1);
}

void TestTextFile::sizeTexts_data()
{
    QTest::addColumn<qint64>("bytes");
    QTest::addColumn<QString>("transfer");
    QTest::addColumn<QString>("inactive");
    QTest::newRow("small") << qint64(1023) << "1023 bytes"
                           << "1023 bytes";
    QTest::newRow("1024") << qint64(1024) << "1 Kb"
                          << "1024 bytes";
    QTest::newRow("1536") << qint64(1536) << "1.5 Kb"
                          << "1.5 Kb";
    QTest::newRow("1 Mb") << qint64(1048576) << "1 Mb"
                          << "1024 Kb";
    QTest::newRow("5 GiB") << qint64(5) * 1024 * 1048576 << "5120 Mb"
                           << "5120 Mb";
    QTest::newRow("two decimals") << qint64(1048576 + 13631) << "1.01 Mb"
                                  << "1.01 Mb";
}

void TestTextFile::sizeTexts()
{
    QFETCH(qint64, bytes);
    QTEST(sizeText(bytes, SizeUnits::FromThreshold), "transfer");
    QTEST(sizeText(bytes, SizeUnits::AboveThreshold), "inactive");
}

void TestTextFile::elapsed()
{
    QCOMPARE(elapsedText(0), QStringLiteral("0:00:00"));
    QCOMPARE(elapsedText(3725), QStringLiteral("1:02:05"));
    QCOMPARE(elapsedText(36000 * 3), QStringLiteral("30:00:00"));
}

int main(int argc, char **argv)
{
    QLocale::setDefault(QLocale::c());
    TestTextFile test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_textfile.moc"
