#include "chunkeddecoder.h"
#include "failure.h"
#include "httpresponse.h"

#include <QTest>

class TestHttpResponse : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void heads_data();
    void heads();
    void lineEndMissing();
    void chunked_data();
    void chunked();
};

void TestHttpResponse::heads_data()
{
    QTest::addColumn<QByteArray>("chunk");
    QTest::addColumn<bool>("head");
    QTest::addColumn<int>("code");
    QTest::addColumn<qint64>("length");
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<QString>("location");
    QTest::addColumn<bool>("chunked");

    QTest::newRow("206 with body")
        << QByteArray("HTTP/1.1 206 Partial Content\r\nContent-Length: 500\r\n\r\nabc") << true
        << 206 << qint64(500) << QByteArray("abc") << "" << false;
    QTest::newRow("length in any case")
        << QByteArray("HTTP/1.0 200 OK\r\ncontent-LENGTH:  42 \r\n\r\n") << true << 200
        << qint64(42) << QByteArray() << "" << false;
    QTest::newRow("LF LF only") << QByteArray("HTTP/1.1 200 OK\nContent-Length: 3\n\nxyz") << true
                                << 200 << qint64(3) << QByteArray("xyz") << "" << false;
    QTest::newRow("head without blank line is all payload")
        << QByteArray("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n") << true << 200
        << qint64(-1) << QByteArray("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n") << ""
        << false;
    QTest::newRow("302 last line ended by LF LF")
        << QByteArray("HTTP/1.1 302 Found\nLocation: https://b/d.zip\n\n") << true << 302
        << qint64(-1) << QByteArray() << "https://b/d.zip" << false;
    QTest::newRow("lower-case location is not one")
        << QByteArray("HTTP/1.1 302 Found\r\nlocation: http://b/\r\n\r\n") << true << 302
        << qint64(-1) << QByteArray() << "" << false;
    QTest::newRow("chunked in any case")
        << QByteArray("HTTP/1.1 200 OK\r\nTRANSFER-encoding:  Chunked \r\n\r\n5\r\n") << true << 200
        << qint64(-1) << QByteArray("5\r\n") << "" << true;
    QTest::newRow("chunked after another coding")
        << QByteArray("HTTP/1.1 200 OK\r\nTransfer-Encoding: gzip, chunked\r\n\r\n") << true << 200
        << qint64(-1) << QByteArray() << "" << true;
    QTest::newRow("chunked only in the body")
        << QByteArray("HTTP/1.1 200 OK\r\n\r\nTransfer-Encoding: chunked\r\n\r\n") << true << 200
        << qint64(-1) << QByteArray("Transfer-Encoding: chunked\r\n\r\n") << "" << false;
    QTest::newRow("lower-case scheme is data")
        << QByteArray("http/1.1 404 x\r\n\r\n") << false << 0 << qint64(-1)
        << QByteArray("http/1.1 404 x\r\n\r\n") << "" << false;
    QTest::newRow("short garbage head") << QByteArray("HTTP/1.1") << true << 0 << qint64(-1)
                                        << QByteArray("HTTP/1.1") << "" << false;
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
    QTEST(Http::isChunked(chunk), "chunked");
}

void TestHttpResponse::lineEndMissing()
{
    // A header value needs a line end after it; without one the chunk cannot be taken apart.
    QVERIFY_THROWS_EXCEPTION(Failure, Http::contentLength("HTTP/1.1 200 OK\r\nContent-Length: 4"));
    QVERIFY_THROWS_EXCEPTION(Failure, Http::location("HTTP/1.1 302 x\r\nLocation: http://a/"));
    // Ranges beyond 2 GiB are asked for whole.
    QVERIFY(Http::request("", "h", 5000000000).endsWith("Range: bytes=5000000000-\r\n\r\n"));
}

void TestHttpResponse::chunked_data()
{
    QTest::addColumn<QByteArray>("framed");
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<QString>("end"); // "finished", "failed", or "open" for more to come

    QTest::newRow("sizes 1, 7 and 10, trailers")
        << QByteArray("1\r\na\r\n7\r\nbcdefgh\r\nA\r\n0123456789\r\n0\r\nX-Suma: 1\r\n\r\n")
        << QByteArray("abcdefgh0123456789") << "finished";
    QTest::newRow("extension, blank and leading zeros")
        << QByteArray("3;nombre=valor\r\nabc\r\n003 \r\ndef\r\n000\r\n") << QByteArray("abcdef")
        << "finished";
    QTest::newRow("bare LF line ends")
        << QByteArray("3\nabc\n0\n\n") << QByteArray("abc") << "finished";
    QTest::newRow("bytes after the last chunk ignored")
        << QByteArray("1\r\na\r\n0\r\n\r\nHTTP/1.1 200 OK\r\n") << QByteArray("a") << "finished";
    QTest::newRow("closed before the last chunk")
        << QByteArray("3\r\nabc\r\n4\r\nde") << QByteArray("abcde") << "open";
    QTest::newRow("size not hexadecimal")
        << QByteArray("3\r\nabc\r\nzz\r\n") << QByteArray("abc") << "failed";
    QTest::newRow("size absurdly large")
        << QByteArray("1FFFFFFFFFFFFFFFF\r\nabc") << QByteArray() << "failed";
    QTest::newRow("chunk longer than its size")
        << QByteArray("3\r\nabcd\r\n0\r\n\r\n") << QByteArray("abc") << "failed";
    QTest::newRow("empty size line") << QByteArray("\r\nabc") << QByteArray() << "failed";
}

void TestHttpResponse::chunked()
{
    QFETCH(QByteArray, framed);
    QFETCH(QString, end);
    // Whole, cut in two at every point, and a byte at a time: the same payload, the same end.
    QList<QList<QByteArray>> cuts{{framed}};
    for (qsizetype at = 1; at < framed.size(); ++at)
        cuts.append({framed.left(at), framed.mid(at)});
    QList<QByteArray> bytes;
    for (const char byte : framed)
        bytes.append(QByteArray(1, byte));
    cuts.append(bytes);
    for (const QList<QByteArray> &reads : cuts) {
        ChunkedDecoder decoder;
        QByteArray payload;
        for (const QByteArray &read : reads) {
            QByteArrayView input(read);
            while (!input.isEmpty())
                payload += decoder.next(input).toByteArray();
        }
        QTEST(payload, "payload");
        const QString state = decoder.finished() ? "finished"
                              : decoder.failed() ? "failed"
                                                 : "open";
        QCOMPARE(state, end);
    }
}

QTEST_GUILESS_MAIN(TestHttpResponse)
#include "tst_httpresponse.moc"
