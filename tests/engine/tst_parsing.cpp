// The pure pieces of the engine: addresses, HTTP heads and chunk framing, FTP replies. What the
// transfers make of them is tested end to end in tst_transfers.
#include "chunkeddecoder.h"
#include "failure.h"
#include "fakedesktop.h"
#include "ftpreply.h"
#include "httpresponse.h"
#include "speedlimit.h"
#include "textfile.h"
#include "urls.h"

#include <QTest>

namespace {

QString orFailure(const std::function<QString()> &piece)
{
    try {
        return piece();
    } catch (const Failure &) {
        return QStringLiteral("Failure");
    }
}

QString joined(const QStringList &parts)
{
    return parts.join(QStringLiteral(" | "));
}

// Each piece as a function of one text, giving its results as one text.
const QHash<QString, std::function<QString(const QByteArray &)>> Pieces{
    // Host (and any message shown), port, path, file name.
    {"address",
     [](const QByteArray &text) {
         const QString url = QString::fromUtf8(text);
         FakeDesktop desktop;
         const QString host = HostOf(url, desktop);
         return joined({host + desktop.callsOf("messageBox").join(QString()),
                        orFailure([&] { return QString::number(PortOf(url)); }), PathOf(url),
                        FileNameOf(url)});
     }},
    {"dots", [](const QByteArray &url) { return ResolveDots(QString::fromUtf8(url)); }},
    {"login",
     [](const QByteArray &url) {
         const AddressLogin login = SplitLogin(QString::fromUtf8(url));
         return joined({login.address, login.user, login.password});
     }},
    // "base reference": where a redirect leads.
    {"redirect",
     [](const QByteArray &text) {
         const QString words = QString::fromUtf8(text);
         return Resolved(words.section(' ', 0, 0), words.section(' ', 1));
     }},
    // Retry-After, the length of a 416, the version, the offered name.
    {"reply headers",
     [](const QByteArray &head) {
         return joined({QString::number(Http::retryAfter(head)),
                        QString::number(Http::completeLength(head)),
                        QString::fromLatin1(Http::validator(head)), Http::dispositionName(head)});
     }},
    // Code, length, payload, location, chunked; "data" when it is not a head at all.
    {"head",
     [](const QByteArray &chunk) -> QString {
         if (!Http::isHead(chunk))
             return QStringLiteral("data");
         return joined({QString::number(Http::statusCode(chunk)),
                        QString::number(Http::contentLength(chunk)),
                        QString::fromUtf8(chunk.mid(Http::bodyStart(chunk))), Http::location(chunk),
                        QString::fromLatin1(Http::isChunked(chunk) ? "chunked" : "")});
     }},
    // "rate ms:wanted ms:wanted ... ms:wait": what each read is given, and how long the last
    // must wait for a full read of 4096 bytes.
    {"speed limit",
     [](const QByteArray &text) {
         QStringList words = QString::fromLatin1(text).split(QLatin1Char(' '));
         SpeedLimit limit;
         limit.setRate(words.takeFirst().toLongLong(), 0);
         const QString last = words.takeLast();
         QStringList given;
         for (const QString &word : std::as_const(words))
             given << QString::number(limit.take(word.section(':', 1).toLongLong(),
                                                 word.section(':', 0, 0).toLongLong()));
         given << QString::number(limit.waitMs(4096, last.section(':', 0, 0).toLongLong()));
         return joined(given);
     }},
    // "address start [referer cookie validator]": the request for that part of that address.
    {"request",
     [](const QByteArray &text) {
         const QStringList words = QString::fromUtf8(text).split(QLatin1Char(' '));
         return Http::request({.path = PathOf(words.value(0)),
                               .host = HostLineOf(words.value(0)),
                               .rangeStart = words.value(1).toLongLong(),
                               .extras = {.referer = words.value(2),
                                          .cookie = words.value(3),
                                          .validator = words.value(4)}});
     }},
    // The replies a control connection completes, read whole and a byte at a time.
    {"ftp replies",
     [](const QByteArray &chunk) {
         Ftp::ReplyReader whole, bytes;
         QStringList replies, split;
         for (const QByteArray &line : whole.take(chunk))
             replies << QString::fromUtf8(line);
         for (qsizetype i = 0; i < chunk.size(); ++i) {
             for (const QByteArray &line : bytes.take(chunk.mid(i, 1)))
                 split << QString::fromUtf8(line);
         }
         return split == replies ? joined(replies) : QStringLiteral("cut differently");
     }},
    // Each field until the end, then what one more read gives.
    {"fields",
     [](const QByteArray &text) {
         TextFileReader reader(text);
         QStringList values;
         while (!reader.atEnd())
             values << reader.readField();
         return joined(values << orFailure([&] { return reader.readField(); }));
     }},
    // The data connection's port of a 229, host and port of a 227.
    {"passive",
     [](const QByteArray &line) -> QString {
         if (line.startsWith("229"))
             return QString::number(Ftp::extendedPassivePort(line));
         const Ftp::Endpoint endpoint = Ftp::passiveEndpoint(line);
         return endpoint.host + ':' + QString::number(endpoint.port);
     }},
    // Announced address and the control connection's peer: which one the data goes to.
    {"inside address",
     [](const QByteArray &pair) {
         const QList<QByteArray> both = pair.split(' ');
         return QString(Ftp::announcesInsideAddress(both[0], both[1]) ? "peer" : "announced");
     }},
};

} // namespace

class TestParsing : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QLocale::setDefault(QLocale::c()); }
    void pieces_data();
    void pieces();
    void chunked_data();
    void chunked();
};

void TestParsing::pieces_data()
{
    QTest::addColumn<QString>("piece");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("result"); // "Failure" when the piece throws
    const auto row = [](const char *piece, const QByteArray &text, const QString &result) {
        QTest::addRow(
            "%s %s", piece,
            QByteArray(text).replace("\r", "\\r").replace("\n", "\\n").left(60).constData())
            << QString(piece) << text << result;
    };
    const QString refused = "ERROR" + QString("Critical|Dirección incorrecta.");
    row("address", "http://host/", "host | 80 |  | index.html");
    row("address", "http://h/canci%C3%B3n.mp3?id=7&a=/b#x",
        "h | 80 | canci%C3%B3n.mp3?id=7&a=/b#x | canción.mp3");
    row("address", "http://h/d/%2E%2E", "h | 80 | d/%2E%2E | index.html");
    row("address", "http://h/a%2Fb%0Ac%5C", "h | 80 | a%2Fb%0Ac%5C | a_b_c_");
    row("address", "https://host/d/f.zip", "host | 443 | d/f.zip | f.zip");
    row("address", "ftp://h:70000/x", "h | Failure | x | x");
    row("address", "HTTPS://host/f.zip", refused + " | 80 | f.zip | f.zip");
    row("address", "ftp://[2001:db8::1]/p/f", "2001:db8::1 | 21 | p/f | f");
    row("login", "http://h/a@b", "http://h/a@b |  | "); // an @ in the path is no login
    row("redirect", "https://h/a/f.bin //otro/x", "https://otro/x");
    row("redirect", "http://h/a/f.bin http://h/ a", "http://h/%20a");
    row("redirect", "http://h/a/f.bin file:///etc/passwd", "");
    row("reply headers",
        "HTTP/1.1 200 OK\r\nretry-after: 99999999\r\nETag: \"e1\"\r\nLast-Modified: ayer\r\n"
        "Content-Disposition: attachment; filename*=UTF-8''%C3%B1u.txt; "
        "filename=\"nu.txt\"\r\n\r\n",
        "300 | -1 | \"e1\" | ñu.txt");
    row("reply headers",
        "HTTP/1.1 416 R\r\nRetry-After: -5\r\nContent-Range: bytes */5000\r\n"
        "Last-Modified: ayer\r\nContent-Disposition: inline; filename=\"../../.bashrc\"\r\n\r\n",
        "-1 | 5000 | ayer | ../../.bashrc");
    row("dots", "ftp://h/a/b/../../c", "ftp://h/c");
    row("dots", "http://h/../x", "Failure");
    row("dots", "http://h" + QByteArray("/a").repeated(256), "Failure"); // 257 segments
    row("head", "HTTP/1.1 206 Partial\r\ncontent-LENGTH:  42 \r\n\r\nabc", "206 | 42 | abc |  | ");
    // A head without its blank line is all payload.
    row("head", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n",
        "200 | -1 | HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n |  | ");
    // A lone CR or LF ends the address too, though the value runs on to a later CR LF.
    row("head", "HTTP/1.1 302 Found\nLocation: http://b/x\rc\r\n\r\n",
        "302 | -1 |  | http://b/x | ");
    row("head", "HTTP/1.1 200 OK\r\nTransfer-Encoding: gzip, chunked\r\n\r\n",
        "200 | -1 |  |  | chunked");
    row("head", "http/1.1 404 x\r\n\r\n", "data");
    // A header value needs a line end after it.
    row("head", "HTTP/1.1 200 OK\r\nContent-Length: 4", "Failure");
    const auto request = [](const QString &host, const QString &start,
                            const QString &more = {}) -> QString {
        return "GET /f HTTP/1.1\r\nUser-Agent: Corvane\r\nHost: " + host +
               "\r\nConnection: close\r\nRange: bytes=" + start + "-\r\n" + more + "\r\n";
    };
    // The port is named when it is not the scheme's own.
    row("request", "https://h:443/f 0", request("h", "0"));
    row("request", "http://h:443/f 5000000000", request("h:443", "5000000000"));
    // Extras only when the download has them; If-Range only on a resume.
    row("request", "http://h/f 0 http://p/a.html k=v \"e1\"",
        request("h", "0", "Referer: http://p/a.html\r\nCookie: k=v\r\n"));
    row("request", "http://h/f 7 http://p/ k=v\r\nX:y \"e1\"",
        request("h", "7", "Referer: http://p/\r\nIf-Range: \"e1\"\r\n"));
    // 1000 Kb/s: 1024 bytes a millisecond, a quarter of a second at most in the bucket.
    row("speed limit", "1024000 0:300000 100:300000 100:1 5000:999999 5000:0",
        "0 | 102400 | 0 | 256000 | 4");
    row("speed limit", "1024000 0:1 1:1000 1:1000 1:0", "0 | 1000 | 24 | 4");
    row("speed limit", "0 0:300000 0:0", "300000 | 1");
    row("speed limit", "1000 0:1 10:50 10:0", "0 | 10 | 1000"); // slow: waits are capped at 1 s
    row("ftp replies", "350 Seguimos\r\n213 5000\r\n", "350 Seguimos | 213 5000");
    row("ftp replies", "250 Ok\r\n350 Res", "250 Ok"); // the rest waits for its line end
    row("ftp replies", "220-Hola\r\n230 no es el final\r\n220-x\r\n220 \r\n331 p\r\n",
        "220  | 331 p");
    row("passive", "229 Entering Extended Passive Mode (|||50123|)", "50123");
    row("passive", "229 (|||70000|)", "Failure");
    row("inside address", "192.168.1.2 203.0.113.5", "peer");
    row("inside address", "198.51.100.7 203.0.113.5", "announced");
    row("passive", "227 ok (127, 0, 0, 1, 200, 1)\r", "127.0.0.1:51201");
    row("passive", "227 (1,2,3,4,72057594037927937,1)\r", "Failure"); // 2^56 + 1: overflow
    row("fields", "\"a\r\nb\"\r\nc\r\n", "a | b\" | c | Failure");    // quotes end with the line
}

void TestParsing::pieces()
{
    QFETCH(QString, piece);
    QFETCH(QByteArray, text);
    QVERIFY(Pieces.contains(piece));
    QTEST(orFailure([&] { return Pieces[piece](text); }), "result");
}

void TestParsing::chunked_data()
{
    QTest::addColumn<QByteArray>("framed");
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<QString>("end"); // "finished", "failed", or "open" for more to come
    const auto row = [](const char *tag, const char *framed, const char *payload, const char *end) {
        QTest::newRow(tag) << QByteArray(framed) << QByteArray(payload) << QString(end);
    };
    row("sizes 1, 7 and 10, trailers",
        "1\r\na\r\n7\r\nbcdefgh\r\nA\r\n0123456789\r\n0\r\nX-Suma: 1\r\n\r\n", "abcdefgh0123456789",
        "finished");
    row("extension, blank and leading zeros", "3;nombre=valor\r\nabc\r\n003 \r\ndef\r\n000\r\n",
        "abcdef", "finished");
    row("bytes after the last chunk ignored", "1\r\na\r\n0\r\n\r\nHTTP/1.1 200 OK\r\n", "a",
        "finished");
    row("closed before the last chunk", "3\r\nabc\r\n4\r\nde", "abcde", "open");
    row("size absurdly large", "1FFFFFFFFFFFFFFFF\r\nabc", "", "failed");
    row("chunk longer than its size", "3\r\nabcd1\r\nx\r\n0\r\n\r\n", "abc", "failed");
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

QTEST_GUILESS_MAIN(TestParsing)
#include "tst_parsing.moc"
