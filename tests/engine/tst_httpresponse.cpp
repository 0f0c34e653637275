#include "failure.h"
#include "httpresponse.h"

#include <QTest>

class TestHttpResponse : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void requestBytes();
    void heads_data();
    void heads();
    void lineEndMissing();
};

void TestHttpResponse::requestBytes()
{
    QCOMPARE(Http::request("dir/f.zip", "host", 0),
             QByteArray("GET /dir/f.zip HTTP/1.1\r\nUser-Agent: Corvane\r\nHost: host\r\n"
                        "Connection: close\r\nRange: bytes=0-\r\n\r\n"));
    QCOMPARE(Http::request("", "h", 5000000000).right(28),
             QByteArray("Range: bytes=5000000000-\r\n\r\n"));
}

void TestHttpResponse::heads_data()
{
    QTest::addColumn<QByteArray>("chunk");
    QTest::addColumn<bool>("head");
    QTest::addColumn<int>("code");
    QTest::addColumn<qint64>("length");
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<QString>("location");

    QTest::newRow("206 with body")
        << QByteArray("HTTP/1.1 206 Partial Content\r\nContent-Length: 500\r\n\r\nabc") << true
        << 206 << qint64(500) << QByteArray("abc") << "";
    QTest::newRow("length in any case")
        << QByteArray("HTTP/1.0 200 OK\r\ncontent-LENGTH:  42 \r\n\r\n") << true << 200
        << qint64(42) << QByteArray() << "";
    QTest::newRow("no length") << QByteArray("HTTP/1.1 200 OK\r\nServer: x\r\n\r\nbody") << true
                               << 200 << qint64(-1) << QByteArray("body") << "";
    QTest::newRow("LF LF only") << QByteArray("HTTP/1.1 200 OK\nContent-Length: 3\n\nxyz") << true
                                << 200 << qint64(3) << QByteArray("xyz") << "";
    QTest::newRow("head without blank line is all payload")
        << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n") << true << 200 << qint64(9)
        << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n") << "";
    QTest::newRow("302 with CR LF")
        << QByteArray("HTTP/1.1 302 Found\r\nLocation: http://b/c.zip\r\n\r\n") << true << 302
        << qint64(-1) << QByteArray() << "http://b/c.zip";
    QTest::newRow("302 last line ended by LF LF")
        << QByteArray("HTTP/1.1 302 Found\nLocation: http://b/d.zip\n\n") << true << 302
        << qint64(-1) << QByteArray() << "http://b/d.zip";
    QTest::newRow("lower-case location is not one")
        << QByteArray("HTTP/1.1 302 Found\r\nlocation: http://b/\r\n\r\n") << true << 302
        << qint64(-1) << QByteArray() << "";
    QTest::newRow("body only") << QByteArray("\x00\x01HTTP/1.1", 10) << false << 0 << qint64(-1)
                               << QByteArray("\x00\x01HTTP/1.1", 10) << "";
    QTest::newRow("lower-case scheme is data")
        << QByteArray("http/1.1 404 x\r\n\r\n") << false << 0 << qint64(-1)
        << QByteArray("http/1.1 404 x\r\n\r\n") << "";
    QTest::newRow("short garbage head")
        << QByteArray("HTTP/1.1") << true << 0 << qint64(-1) << QByteArray("HTTP/1.1") << "";
}

void TestHttpResponse::heads()
{
    QFETCH(QByteArray, chunk);
    QFETCH(QByteArray, payload);
    QTEST(Http::isHead(chunk), "head");
    if (!Http::isHead(chunk))
        return;
    QTEST(Http::statusCode(chunk), "code");
    QTEST(Http::contentLength(chunk), "length");
    QCOMPARE(chunk.mid(Http::bodyStart(chunk)), payload);
    QTEST(Http::location(chunk), "location");
}

void TestHttpResponse::lineEndMissing()
{
    // A header value needs a line end after it; without one the chunk cannot be taken apart.
    QVERIFY_THROWS_EXCEPTION(Failure, Http::contentLength("HTTP/1.1 200 OK\r\nContent-Length: 4"));
    QVERIFY_THROWS_EXCEPTION(Failure, Http::location("HTTP/1.1 302 x\r\nLocation: http://a/"));
}

QTEST_GUILESS_MAIN(TestHttpResponse)
#include "tst_httpresponse.moc"
