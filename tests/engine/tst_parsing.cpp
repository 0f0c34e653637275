// The pure pieces of the engine, from tables: addresses, HTTP heads and chunk framing, FTP
// replies. What the transfers make of them is tested end to end in tst_http and tst_ftp.
#include "chunkeddecoder.h"
#include "failure.h"
#include "fakedesktop.h"
#include "ftpreply.h"
#include "httpresponse.h"
#include "urls.h"

#include <QTest>

class TestParsing : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void addressParts_data();
    void addressParts();
    void resolveDots_data();
    void resolveDots();
    void heads_data();
    void heads();
    void chunked_data();
    void chunked();
    void ftpReplies_data();
    void ftpReplies();
    void passive_data();
    void passive();
    void beyond2GiB();
    void extension();
};

void TestParsing::addressParts_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("host"); // "ERROR": refused with "Dirección incorrecta."
    QTest::addColumn<int>("port");     // -1: PortOf fails
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("name");

    QTest::newRow("port and folders") << "http://host:8080/dir/f.zip"
                                      << "host" << 8080 << "dir/f.zip"
                                      << "f.zip";
    QTest::newRow("root slash") << "http://host/"
                                << "host" << 80 << ""
                                << "index.html";
    QTest::newRow("no slash after host") << "http://host"
                                         << "host" << 80 << ""
                                         << "host";
    QTest::newRow("ftp, only %20 decoded") << "ftp://host/pub/my%20file%41.txt"
                                           << "host" << 21 << "pub/my%20file%41.txt"
                                           << "my file%41.txt";
    QTest::newRow("colon in path cuts host") << "http://h/a:b/c.zip"
                                             << "h/a" << 0 << "a:b/c.zip"
                                             << "c.zip";
    QTest::newRow("https") << "https://host/d/f.zip"
                           << "host" << 443 << "d/f.zip"
                           << "f.zip";
    QTest::newRow("https with port") << "https://host:8443/f.zip"
                                     << "host" << 8443 << "f.zip"
                                     << "f.zip";
    QTest::newRow("port without slash") << "http://host:8080"
                                        << "host" << -1 << ""
                                        << "host:8080";
    QTest::newRow("port out of range") << "ftp://h:70000/x"
                                       << "h" << -1 << "x"
                                       << "x";
    QTest::newRow("scheme in capitals") << "HTTPS://host/f.zip"
                                        << "ERROR" << 80 << "f.zip"
                                        << "f.zip";
    QTest::newRow("empty") << ""
                           << "ERROR" << 80 << ""
                           << "index.html";
}

void TestParsing::addressParts()
{
    QFETCH(QString, url);
    QFETCH(QString, host);
    QFETCH(int, port);
    FakeDesktop desktop;
    QCOMPARE(HostOf(url, desktop), host);
    QCOMPARE(desktop.calls, host == HostError
                                ? QStringList{"messageBox|Critical|Dirección incorrecta."}
                                : QStringList());
    if (port < 0)
        QVERIFY_THROWS_EXCEPTION(Failure, PortOf(url));
    else
        QCOMPARE(int(PortOf(url)), port);
    QTEST(PathOf(url), "path");
    QTEST(FileNameOf(url), "name");
}

void TestParsing::resolveDots_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("resolved"); // empty: the routine fails
    QTest::newRow("one up") << "http://h/a/b/../c.zip"
                            << "http://h/a/c.zip";
    QTest::newRow("https, dot kept") << "https://h/./a/../b"
                                     << "https://h/./b";
    QTest::newRow("two up") << "ftp://h/a/b/../../c"
                            << "ftp://h/c";
    QTest::newRow("no scheme") << "h/a/../b"
                               << "h/b";
    QTest::newRow("above the host") << "http://h/../x"
                                    << "";
    QTest::newRow("257 segments") << "http://h" + QString("/a").repeated(256) << "";
}

void TestParsing::resolveDots()
{
    QFETCH(QString, url);
    QFETCH(QString, resolved);
    if (resolved.isEmpty())
        QVERIFY_THROWS_EXCEPTION(Failure, ResolveDots(url));
    else
        QCOMPARE(ResolveDots(url), resolved);
}

void TestParsing::heads_data()
{
    QTest::addColumn<QByteArray>("chunk");
    QTest::addColumn<int>("code"); // -1: not a head, all payload
    QTest::addColumn<qint64>("length");
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<QString>("location");
    QTest::addColumn<bool>("chunked");

    QTest::newRow("206, length in any case")
        << QByteArray("HTTP/1.1 206 Partial\r\ncontent-LENGTH:  42 \r\n\r\nabc") << 206
        << qint64(42) << QByteArray("abc") << "" << false;
    QTest::newRow("LF LF only") << QByteArray("HTTP/1.0 200 OK\nContent-Length: 3\n\nxyz") << 200
                                << qint64(3) << QByteArray("xyz") << "" << false;
    QTest::newRow("head without blank line is all payload")
        << QByteArray("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n") << 200 << qint64(-1)
        << QByteArray("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n") << "" << false;
    QTest::newRow("302 last line ended by LF LF")
        << QByteArray("HTTP/1.1 302 Found\nLocation: https://b/d.zip\n\n") << 302 << qint64(-1)
        << QByteArray() << "https://b/d.zip" << false;
    QTest::newRow("lower-case location is not one")
        << QByteArray("HTTP/1.1 302 Found\r\nlocation: http://b/\r\n\r\n") << 302 << qint64(-1)
        << QByteArray() << "" << false;
    QTest::newRow("chunked in any case")
        << QByteArray("HTTP/1.1 200 OK\r\nTRANSFER-encoding:  Chunked \r\n\r\n5\r\n") << 200
        << qint64(-1) << QByteArray("5\r\n") << "" << true;
    QTest::newRow("chunked after another coding")
        << QByteArray("HTTP/1.1 200 OK\r\nTransfer-Encoding: gzip, chunked\r\n\r\n") << 200
        << qint64(-1) << QByteArray() << "" << true;
    QTest::newRow("chunked only in the body")
        << QByteArray("HTTP/1.1 200 OK\r\n\r\nTransfer-Encoding: chunked\r\n\r\n") << 200
        << qint64(-1) << QByteArray("Transfer-Encoding: chunked\r\n\r\n") << "" << false;
    QTest::newRow("lower-case scheme is data")
        << QByteArray("http/1.1 404 x\r\n\r\n") << -1 << qint64(-1) << QByteArray() << "" << false;
    QTest::newRow("short garbage head")
        << QByteArray("HTTP/1.1") << 0 << qint64(-1) << QByteArray("HTTP/1.1") << "" << false;
}

void TestParsing::heads()
{
    QFETCH(QByteArray, chunk);
    QFETCH(int, code);
    QCOMPARE(Http::isHead(chunk), code >= 0);
    if (code < 0)
        return;
    QCOMPARE(Http::statusCode(chunk), code);
    QTEST(Http::contentLength(chunk), "length");
    QTEST(chunk.mid(Http::bodyStart(chunk)), "payload");
    QTEST(Http::location(chunk), "location");
    QTEST(Http::isChunked(chunk), "chunked");
    // A header value needs a line end after it; without one the chunk cannot be taken apart.
    QVERIFY_THROWS_EXCEPTION(Failure, Http::contentLength("HTTP/1.1 200 OK\r\nContent-Length: 4"));
}

void TestParsing::chunked_data()
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
        << QByteArray("3\r\nabcd1\r\nx\r\n0\r\n\r\n") << QByteArray("abc") << "failed";
    QTest::newRow("empty size line") << QByteArray("\r\nabc") << QByteArray() << "failed";
}

void TestParsing::chunked()
{
    QFETCH(QByteArray, framed);
    QFETCH(QString, end);
    // Whole, cut in two at every point, and a byte at a time: the same payload, the same end.
    QList<QList<QByteArray>> cuts{{framed}, {}};
    for (const char byte : framed)
        cuts.last().append(QByteArray(1, byte));
    for (qsizetype at = 1; at < framed.size(); ++at)
        cuts.append({framed.left(at), framed.mid(at)});
    for (const QList<QByteArray> &reads : cuts) {
        ChunkedDecoder decoder;
        QByteArray payload;
        for (const QByteArray &read : reads) {
            QByteArrayView input(read);
            while (!input.isEmpty())
                payload += decoder.next(input).toByteArray();
        }
        QTEST(payload, "payload");
        QCOMPARE(decoder.finished() ? "finished" : decoder.failed() ? "failed" : "open", end);
    }
}

void TestParsing::ftpReplies_data()
{
    QTest::addColumn<QByteArray>("chunk");
    QTest::addColumn<int>("code");
    QTest::newRow("last line wins") << QByteArray("331 Pass\r\n230 Ok\r\n") << 230;
    QTest::newRow("text after last CR dropped") << QByteArray("250 Ok\r\n350 Rest") << 250;
    QTest::newRow("no digits") << QByteArray("hola\r\n") << 0;
    // The character after each carriage return is taken for its line feed, whatever it is.
    QTest::newRow("bare CR eats a character") << QByteArray("150 a\r226 b\r") << 26;
}

void TestParsing::ftpReplies()
{
    QFETCH(QByteArray, chunk);
    QTEST(Ftp::replyCode(Ftp::lastLine(chunk)), "code");
}

void TestParsing::passive_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("host");
    QTest::addColumn<int>("port"); // -1: no address
    QTest::newRow("usual") << QByteArray("227 Entering Passive Mode (192,168,1,2,19,137).\r")
                           << "192.168.1.2" << 5001;
    QTest::newRow("blanks") << QByteArray("227 ok (127, 0, 0, 1, 200, 1)\r") << "127.0.0.1"
                            << 51201;
    QTest::newRow("no parentheses") << QByteArray("227 ok\r") << "" << -1;
    QTest::newRow("five numbers") << QByteArray("227 (1,2,3,4,5)\r") << "" << -1;
}

void TestParsing::passive()
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
}

void TestParsing::beyond2GiB()
{
    QVERIFY(Http::request("", "h", 5000000000).endsWith("Range: bytes=5000000000-\r\n\r\n"));
    QCOMPARE(Ftp::sizeOf("213 5000000000\r"), qint64(5000000000));
}

void TestParsing::extension()
{
    QCOMPARE(ExtensionOf("a.tar.gz"), QStringLiteral("gz"));
    QCOMPARE(ExtensionOf("README"), QString());
}

QTEST_GUILESS_MAIN(TestParsing)
#include "tst_parsing.moc"
