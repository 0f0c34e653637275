#include "failure.h"
#include "ftpreply.h"

#include <QTest>

class TestFtpReply : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lastLine_data();
    void lastLine();
    void directories_data();
    void directories();
    void passive_data();
    void passive();
};

void TestFtpReply::lastLine_data()
{
    QTest::addColumn<QByteArray>("chunk");
    QTest::addColumn<int>("code");
    QTest::newRow("one line") << QByteArray("220 Hola\r\n") << 220;
    QTest::newRow("multi-line greeting in one chunk")
        << QByteArray("220-Bienvenido\r\n220-Segunda\r\n220 \r\n") << 220;
    QTest::newRow("continuation line alone") << QByteArray("220-Bienvenido\r\n") << 220;
    QTest::newRow("last line wins") << QByteArray("331 Pass\r\n230 Ok\r\n") << 230;
    QTest::newRow("text after last CR dropped") << QByteArray("250 Ok\r\n350 Rest") << 250;
    QTest::newRow("reply split, first half") << QByteArray("213 12") << 0;
    QTest::newRow("no digits") << QByteArray("hola\r\n") << 0;
    QTest::newRow("empty") << QByteArray() << 0;
    // The character after each carriage return is taken for its line feed, whatever it is.
    QTest::newRow("bare CR eats a character") << QByteArray("150 a\r226 b\r") << 26;
}

void TestFtpReply::lastLine()
{
    QFETCH(QByteArray, chunk);
    QTEST(Ftp::replyCode(Ftp::lastLine(chunk)), "code");
}

void TestFtpReply::directories_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("directory");
    QTest::newRow("nested") << "pub/tools/x.zip"
                            << "/pub/tools";
    QTest::newRow("root file") << "x.zip"
                               << "";
    QTest::newRow("no path") << ""
                             << "";
    QTest::newRow("folder only") << "pub/"
                                 << "/pub";
}

void TestFtpReply::directories()
{
    QFETCH(QString, path);
    QTEST(Ftp::directoryOf(path), "directory");
}

void TestFtpReply::passive_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("host");
    QTest::addColumn<int>("port");
    QTest::newRow("usual") << QByteArray("227 Entering Passive Mode (192,168,1,2,19,137).\r")
                           << "192.168.1.2" << 5001;
    QTest::newRow("blanks") << QByteArray("227 ok (127, 0, 0, 1, 200, 1)\r") << "127.0.0.1"
                            << 51201;
    QTest::newRow("no parentheses") << QByteArray("227 ok\r") << "" << -1;
    QTest::newRow("five numbers") << QByteArray("227 (1,2,3,4,5)\r") << "" << -1;
}

void TestFtpReply::passive()
{
    QFETCH(QByteArray, line);
    QFETCH(int, port);
    if (port < 0) {
        QVERIFY_THROWS_EXCEPTION(Failure, Ftp::passiveEndpoint(line));
        return;
    }
    const Ftp::Endpoint endpoint = Ftp::passiveEndpoint(line);
    QTEST(endpoint.host, "host");
    QCOMPARE(int(endpoint.port), port);
    QCOMPARE(Ftp::sizeOf("213 1048576\r"), qint64(1048576));
}

QTEST_GUILESS_MAIN(TestFtpReply)
#include "tst_ftpreply.moc"
