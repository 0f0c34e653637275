// The engine: its pure pieces (addresses, HTTP heads and chunk framing, FTP replies); the lists,
// their files and commands, the addresses a person types, the timer ticks called by hand; HTTP,
// HTTPS and FTP downloads end to end against scripted servers, for FTP the answers stock servers
// rarely give (the stock servers, resuming and logging in, are in tst_realtimers).
#include "alldownloads.h"
#include "chunkeddecoder.h"
#include "enginefixture.h"
#include "failure.h"
#include "ftpreply.h"
#include "httpresponse.h"
#include "localservers.h"
#include "quickadd.h"
#include "scriptedftpserver.h"
#include "scriptedhttpserver.h"
#include "speedlimit.h"
#include "testauthority.h"
#include "textfile.h"
#include "urls.h"

#include <QDir>
#include <QSignalSpy>
#include <QTest>

namespace {

const QString Url1 = QStringLiteral("http://127.0.0.1:9/uno.zip");
const QString Url2 = QStringLiteral("ftp://127.0.0.1:9/pub/dos.bin");

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

const QByteArray Content = randomBytes(200000);

// `content` as a chunked reply in chunks of `size` bytes, ended by `ending`.
HttpReply chunkedReply(const QByteArray &content, int size,
                       const QByteArray &ending = "0\r\nX-Suma: 7\r\n\r\n")
{
    HttpReply reply = HttpReply::of("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n");
    for (qsizetype at = 0; at < content.size(); at += size)
        reply.bytes += QByteArray::number(content.mid(at, size).size(), 16) + "\r\n" +
                       content.mid(at, size) + "\r\n";
    reply.bytes += ending;
    return reply;
}

} // namespace

class TestEngine : public QObject
{
    Q_OBJECT

    TestAuthority m_trusted, m_other;
    ServerCertificate m_local, m_untrusted, m_misnamed;

private Q_SLOTS:
    void initTestCase()
    {
        QLocale::setDefault(QLocale::c());
        // The engine reads the variable once, at its first secure connection.
        qputenv("SSL_CERT_FILE", m_trusted.certificateFile().toLocal8Bit());
        m_local = m_trusted.issue("local", "IP:127.0.0.1,DNS:localhost");
        m_misnamed = m_trusted.issue("otro", "DNS:otro.invalid");
        m_untrusted = m_other.issue("otro", "IP:127.0.0.1");
        QVERIFY2(m_trusted.ok() && m_other.ok(), qPrintable(m_trusted.error() + m_other.error()));
    }

    void pieces_data()
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
            "Last-Modified: ayer\r\nContent-Disposition: inline; "
            "filename=\"../../.bashrc\"\r\n\r\n",
            "-1 | 5000 | ayer | ../../.bashrc");
        row("dots", "ftp://h/a/b/../../c", "ftp://h/c");
        row("dots", "http://h/../x", "Failure");
        row("dots", "http://h" + QByteArray("/a").repeated(256), "Failure"); // 257 segments
        row("head", "HTTP/1.1 206 Partial\r\ncontent-LENGTH:  42 \r\n\r\nabc",
            "206 | 42 | abc |  | ");
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
        row("fields", "\"a\r\nb\"\r\nc\r\n", "a | b\" | c | Failure"); // quotes end with the line
    }

    void pieces()
    {
        QFETCH(QString, piece);
        QFETCH(QByteArray, text);
        QVERIFY(Pieces.contains(piece));
        QTEST(orFailure([&] { return Pieces[piece](text); }), "result");
    }

    void chunked_data()
    {
        QTest::addColumn<QByteArray>("framed");
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<QString>("end"); // "finished", "failed", or "open" for more to come
        const auto row = [](const char *tag, const char *framed, const char *payload,
                            const char *end) {
            QTest::newRow(tag) << QByteArray(framed) << QByteArray(payload) << QString(end);
        };
        row("sizes 1, 7 and 10, trailers",
            "1\r\na\r\n7\r\nbcdefgh\r\nA\r\n0123456789\r\n0\r\nX-Suma: 1\r\n\r\n",
            "abcdefgh0123456789", "finished");
        row("extension, blank and leading zeros", "3;nombre=valor\r\nabc\r\n003 \r\ndef\r\n000\r\n",
            "abcdef", "finished");
        row("bytes after the last chunk ignored", "1\r\na\r\n0\r\n\r\nHTTP/1.1 200 OK\r\n", "a",
            "finished");
        row("closed before the last chunk", "3\r\nabc\r\n4\r\nde", "abcde", "open");
        row("size absurdly large", "1FFFFFFFFFFFFFFFF\r\nabc", "", "failed");
        row("chunk longer than its size", "3\r\nabcd1\r\nx\r\n0\r\n\r\n", "abc", "failed");
    }

    void chunked()
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

    // Both files byte for byte, and read back by a fresh program.
    void listFiles()
    {
        EngineFixture f;
        // Written out in the order of the file's lines: address, path, total, bytes, time,
        // resumable, user, password, remembered, locked (the queue only); the extras go beside.
        f.active.addnew({.Data = Url1, .path = "/d/uno.zip", .tiempo = 7});
        const DownloadExtras referer{.referer = "http://p/", .cookie = "k=v"};
        f.active.addnew(
            {Url2, "/d/dos.bin", 3000, 1001, 55, true, "ana", "secreta", true, false, referer});
        // Credentials it was not asked to remember are not written; a complete download is not
        // written at all.
        f.active.addnew({.Data = Url2, .path = "/d/tres", .bytes = 5, .usernm = "u"});
        f.active.addnew({.Data = Url1, .path = "/d/cuatro", .total = 9, .bytes = 9});
        const QByteArray dos = "ftp://127.0.0.1:9/pub/dos.bin\r\n/d/dos.bin\r\n 3000 \r\n 1001 \r\n"
                               " 55 \r\nTrue\r\nana\r\nsecreta\r\nTrue\r\n";
        QCOMPARE(
            f.read("activas.dwn"),
            "http://127.0.0.1:9/uno.zip\r\n/d/uno.zip\r\n 0 \r\n 0 \r\n 7 \r\nFalse\r\n\r\n\r\n"
            "False\r\n" +
                dos +
                "ftp://127.0.0.1:9/pub/dos.bin\r\n/d/tres\r\n 0 \r\n 5 \r\n 0 \r\nFalse\r\n\r\n"
                "\r\nFalse\r\n");
        f.active.delfile(1, false);
        f.active.delfile(3, false);
        QVERIFY(!f.active.existe(1));
        QCOMPARE(f.read("activas.dwn"), dos);

        const DownloadExtras version{.validator = "\"v1\""};
        f.inactive.addnew(
            {Url1, "/d/uno", 2048, 1025, 9, true, "ana", "  s  ", true, true, version});
        f.inactive.addnew({.Data = Url2, .path = "/d/dos", .bytes = 1024, .usernm = "ana"});
        const QByteArray inactive = "http://127.0.0.1:9/uno.zip\r\n/d/uno\r\n 2048 \r\n 1025 \r\n"
                                    " 9 \r\nTrue\r\nana\r\n  s  \r\nTrue\r\nTrue\r\n"
                                    "ftp://127.0.0.1:9/pub/dos.bin\r\n/d/dos\r\n 0 \r\n 1024 \r\n"
                                    " 0 \r\nFalse\r\n\r\n\r\nFalse\r\nFalse\r\n";
        QCOMPARE(f.read("inactivas.dwn"), inactive);

        // The same, complete, as a program ended at the wrong moment leaves it.
        EngineFixture g;
        const QByteArray complete = QByteArray(dos).replace(" 1001 ", " 3000 ");
        g.write("activas.dwn", complete);
        g.write("inactivas.dwn", inactive);
        // The extras, beside the lists.
        for (const char *name : {"activas.json", "inactivas.json"})
            g.write(name, f.read(name));
        g.active.load();
        g.inactive.load();
        QVERIFY(g.desktop.calls.isEmpty());
        // Saved as complete: shown as ended, never connected, the saved time dropped. The blanks
        // around a password are lost; the second of the queue kept no credentials.
        const DownloadSlot &slot = g.active.slot(1);
        const ListRecord &first = g.inactive.registro(1);
        QCOMPARE(g.active.rowCount() + g.inactive.rowCount(), 5);
        QCOMPARE(slot.status, DownloadStatus::Finished);
        QCOMPARE(QStringList({slot.Data, slot.usernm, slot.passw, first.passw,
                              g.inactive.registro(2).usernm}),
                 QStringList({Url2, "ana", "secreta", "s", ""}));
        QCOMPARE(QList<qint64>({slot.total, slot.bytes, slot.tiempo}),
                 QList<qint64>({3000, 3000, 0}));
        QVERIFY(slot.allowredo && slot.rememb && first.locked && g.inactive.row(1).locked);
        QVERIFY(slot.extras == referer && first.extras == version);
        QVERIFY(g.inactive.registro(2).extras.isEmpty());
        // Loading does not rewrite the files it reads.
        QCOMPARE(g.read("activas.dwn") + g.read("inactivas.dwn"), complete + inactive);
    }

    void loading_data()
    {
        QTest::addColumn<bool>("active"); // else the inactive list
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("message");   // how the box begins
        QTest::addColumn<QByteArray>("extras"); // "activas.json", none when empty
        const auto row = [](const char *name, bool active, const char *content,
                            const QString &message, const char *extras = "") {
            QTest::newRow(name) << active << QByteArray(content) << message << QByteArray(extras);
        };
        const QString end = "Se ha sobrepasado el final del archivo|Error";
        row("truncated second block", true,
            "http://127.0.0.1:9/a\r\n/d/a\r\n 100 \r\n 100 \r\n 55 \r\nTrue\r\nuser\r\n"
            "pass\r\nTrue\r\nhttp://127.0.0.1:9/b\r\n/d/b\r\n 0 \r\n",
            "Error al cargar lista de activas: " + end);
        // The list is read without them.
        row("extras not readable", true,
            "http://127.0.0.1:9/a\r\n/d/a\r\n 0 \r\n 0 \r\n 0 \r\nFalse\r\n\r\n\r\nFalse\r\n",
            "Error al cargar los datos de las descargas: ", "{\"/d/a\": ");
        row("inactive, truncated second block", false,
            "http://h/a\r\n/a\r\n 1 \r\n 1 \r\n 1 \r\nFalse\r\n\r\n\r\nFalse\r\nFalse\r\n"
            "http://h/b\r\n/b\r\n 1 \r\n",
            "Error al cargar lista de inactivas: " + end);
    }

    // A file that cannot be read whole: what was read before the fault stays, one box says so.
    void loading()
    {
        QFETCH(bool, active);
        QFETCH(QByteArray, content);
        QFETCH(QString, message);
        QFETCH(QByteArray, extras);
        EngineFixture f;
        f.write(active ? "activas.dwn" : "inactivas.dwn", content);
        if (!extras.isEmpty())
            f.write("activas.json", extras);
        active ? f.active.load() : f.inactive.load();
        QCOMPARE(active ? f.active.rowCount() : f.inactive.rowCount(), 2); // the first download
        const QStringList boxes = f.desktop.callsOf("messageBox");
        QCOMPARE(boxes.size(), 1);
        QVERIFY2(boxes[0].startsWith("Critical|" + message), qPrintable(boxes[0]));
        QVERIFY(boxes[0].endsWith("|Error"));
        QCOMPARE(f.read(active ? "activas.dwn" : "inactivas.dwn"), content);
    }

    // The queue's own moves; its commands are pressed in the window tests.
    void queueMoves()
    {
        EngineFixture f;
        f.inactive.addnew({.Data = Url1, .path = f.path("a"), .locked = true});
        // Only locked downloads: nothing moves, the file (with the lock) is written all the same.
        QFile::remove(f.path("inactivas.dwn"));
        f.inactive.toactivas();
        QCOMPARE(f.active.rowCount(), 1);
        QVERIFY(f.read("inactivas.dwn").endsWith("True\r\n"));

        f.inactive.addnew({.Data = Url2, .path = f.path("b")});
        f.inactive.setSeleccionado(1);
        f.inactive.toactivas();
        QCOMPARE(f.active.rowCount(), 2);
        QCOMPARE(f.active.slot(1).path, f.path("b"));
        QVERIFY(!f.inactive.existe(2));
        // The line names the selected download, not the one that moved.
        QCOMPARE(f.history.lines.size(), 1);
        QVERIFY(
            f.history.lines[0].startsWith("Se continúa la descarga de " + f.path("a") + " a las "));
    }

    // What a person types: blanks around dropped, inner ones as in a request, a line break refused.
    // The prompt offers the clipboard when it holds an address, and resolves dots. Then the
    // questions quick add asks, and its refusals when the lists are full.
    void quickAdd()
    {
        EngineFixture f;
        QuickAdd quick(f.active, f.inactive, f.settings, f.desktop, f.history);
        const QString added = "http://127.0.0.1:9/mi%20archivo.zip";
        QCOMPARE(quick.add("  http://127.0.0.1:9/mi archivo.zip \t"), f.path("mi archivo.zip"));
        QCOMPARE(f.active.slot(1).Data, added);
        QCOMPARE(f.history.lines,
                 QStringList{"\r\nDescargando " + added + " a " + f.path("mi archivo.zip")});
        QVERIFY(quick.add("http://127.0.0.1:9/a\r\nb.zip").isEmpty());
        f.desktop.inputAnswers = {QStringLiteral("http://127.0.0.1:9/a/../c.zip"), std::nullopt};
        QCOMPARE(quick.newurl("http://127.0.0.1:9/a/b"), f.path("c.zip"));
        QCOMPARE(f.active.slot(2).Data, QStringLiteral("http://127.0.0.1:9/c.zip"));
        QVERIFY(quick.newurl("hola").isEmpty());
        const QString prompt = "inputBox|Escriba aquí la dirección del archivo|";
        QCOMPARE(f.desktop.calls,
                 (QStringList{"messageBox|Critical|La dirección contiene caracteres no válidos.",
                              prompt + "http://127.0.0.1:9/a/b", prompt}));
        f.desktop.calls.clear();
        f.history.lines.clear();

        // Declining the overwrite question keeps the file, the lists and the history untouched.
        f.write("a.zip", "old");
        QVERIFY(quick.add("http://127.0.0.1:9/a.zip").isEmpty());
        QCOMPARE(f.read("a.zip"), QByteArray("old"));
        QCOMPARE(f.active.rowCount(), 3);
        QVERIFY(f.history.lines.isEmpty());
        f.desktop.yesNoAnswers = {true};
        QCOMPARE(quick.add("http://127.0.0.1:9/a.zip"), f.path("a.zip"));
        QVERIFY(!QFile::exists(f.path("a.zip")));
        // The prompt asks for an FTP login and keeps what the person gives.
        f.desktop.inputAnswers = {QStringLiteral("ftp://127.0.0.1:9/pub/f.bin")};
        f.desktop.loginAnswers = {FtpCredentials{"ana", "secreta", true}};
        QCOMPARE(quick.newurl({}), f.path("f.bin"));
        const DownloadSlot &login = f.active.slot(4);
        QCOMPARE(QStringList({login.usernm, login.passw}), QStringList({"ana", "secreta"}));
        QVERIFY(login.rememb);
        QCOMPARE(f.desktop.callsOf("askFtpLogin"),
                 QStringList{"Usuario/Contraseña|anonymous|freepwd"});

        // Room for five (the template row counts): the next waits in the queue; the bar logs in to
        // FTP as anonymous.
        f.settings.maxdesc = "6";
        QCOMPARE(quick.add("ftp://127.0.0.1:9/pub/my%20file.txt"), f.path("my file.txt"));
        QCOMPARE(quick.add("ftp://127.0.0.1:9/pub/b.txt"), f.path("b.txt"));
        const ListRecord &queued = f.inactive.registro(1);
        QCOMPARE(QStringList({queued.Data, queued.usernm, queued.passw}),
                 QStringList({"ftp://127.0.0.1:9/pub/b.txt", "anonymous", "freepwd"}));

        // Both lists full: each way says so in its own words; nothing is added or logged.
        f.settings.maxdesc = "1";
        for (int i = 0; i < 39; ++i) // the queue holds 40 with its unused slot 0
            f.inactive.addnew({.Data = "http://h/x", .path = "/x"}, Loading::Yes);
        const qsizetype logged = f.history.lines.size();
        f.desktop.inputAnswers = {QStringLiteral("http://127.0.0.1:9/g")};
        QVERIFY(quick.add("http://127.0.0.1:9/c").isEmpty());
        QVERIFY(quick.newurl({}).isEmpty());
        QCOMPARE(
            f.desktop.callsOf("messageBox"),
            QStringList({"Critical|Ya se ha superado el máximo de descargas.",
                         "Critical|Ya se ha alcanzado el máximo posible de descargas en cola."}));
        QCOMPARE(f.history.lines.size(), logged);
    }

    // A download survives as many losses as it has retries; the next one exhausts it, says so in
    // the tray as chosen and deletes the partial file as chosen.
    void retryBudget()
    {
        EngineFixture f;
        f.settings.vecesv = 3;
        f.settings.delinc = 1;
        f.settings.msgdialog = false;
        f.settings.msgsys = true;
        f.write("parcial", "12345");
        const QString url = "http://127.0.0.1:9/parcial";
        QCOMPARE(f.add(url, "parcial"), 1);
        for (int left : {2, 1, 0}) {
            f.transfer(1).redoTick();
            QCOMPARE(f.transfer(1).redoBudget(), left);
        }
        QVERIFY(f.desktop.calls.isEmpty());
        f.transfer(1).redoTick();
        QVERIFY(!f.active.existe(1));
        QVERIFY(!QFile::exists(f.path("parcial")));
        QCOMPARE(f.desktop.calls,
                 QStringList{"raiseTrayIndicator|Se han agotado los intentos para " + url});
        QVERIFY(f.read("activas.dwn").isEmpty());
    }

    void speeds()
    {
        EngineFixture f;
        QSignalSpy status(&f.active, &ActiveList::statusText);

        // Two servers send 300 Kb and 100.5 Kb of a 1800 Kb file and then nothing, the first over
        // two seconds, the second over one; a third download is still connecting and does not
        // count.
        ScriptedHttpServer server([](const QByteArray &request, int) {
            const int sent = request.contains("a.bin") ? 300 * 1024 : 100 * 1024 + 512;
            HttpReply reply = HttpReply::of("HTTP/1.1 200 OK\r\nContent-Length: 1843200\r\n\r\n" +
                                            QByteArray(sent, 'x'));
            reply.stall = true;
            return reply;
        });
        f.add(server.url("a.bin"), "a");
        QTRY_COMPARE(f.active.slot(1).bytes, 300 * 1024 + 1);
        f.active.tiempotransTick();
        f.add(server.url("b.bin"), "b");
        f.add("http://127.0.0.1:9/c", "c");
        QTRY_COMPARE(f.active.slot(2).bytes, 100 * 1024 + 512 + 1);
        f.active.tiempotransTick();
        f.active.setSeleccionado(1);

        f.active.updateTick();
        // 150 and 100 (100.5 rounds to even); the selected one's speed and time left.
        QCOMPARE(status.last().at(0).value<StatusPanel>(), StatusPanel::Velmedia);
        QCOMPARE(status.last().at(1).toString(),
                 QStringLiteral("Vel. Total: 250Kb/seg||Vel. Media: 83.33 Kb/seg"));
        QCOMPARE(QStringList({f.active.details().velmedia, f.active.details().tiemporest}),
                 QStringList({"150 Kb/seg", "0:00:10"}));
    }

    void shutdownWhenAllDone()
    {
        EngineFixture f;
        QSignalSpy requested(&f.active, &ActiveList::shutdownRequested);
        f.active.addnew({.Data = "http://127.0.0.1:9/x", .path = f.path("x")});
        f.active.addnew(
            {.Data = "http://127.0.0.1:9/y", .path = f.path("y"), .total = 5, .bytes = 5});
        f.active.shutdownTick();
        f.active.setApagar(true);
        f.active.shutdownTick();
        QVERIFY(f.desktop.calls.isEmpty());
        // Only a finished download is left.
        f.active.delfile(1, false);
        f.active.shutdownTick();
        f.active.shutdownTick();
        QCOMPARE(f.desktop.calls, QStringList{"powerOff"});
        QCOMPARE(requested.size(), 1);
    }

    // The commands on all downloads, over three running and two queued, each with a partial file.
    void allDownloads_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<bool>("yes");
        QTest::addColumn<QList<int>>("rows"); // in the active and inactive lists, templates too
        QTest::addColumn<QString>("files");   // the partial files left
        const QString all = "a1 a2 a3 i1 i2";
        QTest::newRow("detall, No") << "detall" << false << QList{4, 3} << all;
        QTest::newRow("detact") << "detact" << true << QList{1, 3} << "i1 i2";
        QTest::newRow("detinactivas") << "detinactivas" << true << QList{4, 1} << "a1 a2 a3";
        QTest::newRow("pauseall keeps the files") << "pauseall" << true << QList{1, 6} << all;
        // Four run at once, the template row counted: one stays queued. It asks nothing.
        QTest::newRow("contall until the active list is full")
            << "contall" << false << QList{5, 2} << all;
    }

    void allDownloads()
    {
        QFETCH(QString, command);
        QFETCH(QList<int>, rows);
        QFETCH(bool, yes);
        EngineFixture f;
        for (const QString name : {"a1", "a2", "a3", "i1", "i2"}) {
            f.write(name, "part");
            const ListRecord record{.Data = "http://127.0.0.1:9/" + name, .path = f.path(name)};
            if (name.startsWith('a'))
                f.active.addnew(record, Loading::Yes);
            else
                f.inactive.addnew(record);
        }
        f.desktop.yesNoAnswers = {yes};
        f.settings.maxdescval = 5;
        AllDownloads all(f.active, f.inactive, f.desktop, f.history);
        const QHash<QString, void (AllDownloads::*)()> commands{
            {"detall", &AllDownloads::detall},
            {"detact", &AllDownloads::detact},
            {"detinactivas", &AllDownloads::detinactivas},
            {"pauseall", &AllDownloads::pauseall},
            {"contall", &AllDownloads::contall}};
        (all.*commands.value(command))();

        QCOMPARE((QList{f.active.rowCount(), f.inactive.rowCount()}), rows);
        QTEST(QDir(f.dir.path()).entryList({"a?", "i?"}).join(' '), "files");
        QCOMPARE(f.history.lines.size(), command.startsWith("det") && yes ? 1 : 0);
        // What moved between the lists is in both list files.
        QCOMPARE(f.read("inactivas.dwn").count("http://"), rows[1] - 1);
    }

    // nginx over TLS on a port of its own, building its redirects from the Host line as many
    // servers do (so the line needs the port): 302, 301 with a relative Location, 307. Plain nginx
    // is in tst_realtimers.
    void realServer()
    {
        const ServedFolder served("grande.bin", 3 * 1024 * 1024 + 17);
        NginxServer nginx(served.root.path(),
                          "location = /antes.bin { return 302 $scheme://$http_host/otra.bin; }\n"
                          "location = /otra.bin { return 301 /viejo.bin; }\n"
                          "location = /viejo.bin { return 307 $scheme://$http_host/grande.bin; }",
                          m_local);
        QVERIFY2(nginx.start(), qPrintable(nginx.error()));
        EngineFixture f;
        f.add(nginx.url("antes.bin"), "nuevo.bin");
        QTRY_COMPARE_WITH_TIMEOUT(f.status(1), DownloadStatus::Finished, 20000);
        QCOMPARE(f.read("nuevo.bin"), served.bytes);
        QCOMPARE(f.active.slot(1).Data, nginx.url("grande.bin"));
    }

    void resumeAfterDrop_data()
    {
        QTest::addColumn<bool>("honourRange");
        QTest::addColumn<bool>("chunked");
        QTest::newRow("206: continues") << true << false;
        QTest::newRow("200: starts again from the first byte") << false << false;
        QTest::newRow("chunked 206: continues") << true << true;
    }

    // A partial file whose resume flag was saved as off: the 206 decides where the bytes go.
    void resumeAfterDrop()
    {
        QFETCH(bool, honourRange);
        QFETCH(bool, chunked);
        EngineFixture f;
        // The file, as a whole reply (206 or 200), chunked when asked; the first reply is cut after
        // 30000 bytes of body.
        ScriptedHttpServer server([&](const QByteArray &request, int index) {
            HttpReply reply = ScriptedHttpServer::file(Content, request, honourRange, !chunked);
            const qsizetype body = reply.bytes.indexOf("\r\n\r\n") + 4;
            if (chunked) {
                const QByteArray rest = reply.bytes.mid(body);
                reply.bytes = reply.bytes.left(body - 2) + "Transfer-Encoding: chunked\r\n\r\n" +
                              QByteArray::number(rest.size(), 16) + "\r\n" + rest + "\r\n0\r\n\r\n";
            }
            if (index == 0)
                reply.dropAfter = reply.bytes.indexOf("\r\n\r\n") + 4 + 30000;
            return reply;
        });
        const QString url = server.url("dir/f.bin");
        f.write("f.bin", honourRange ? Content.left(1000) : QByteArray(1000, 'x'));
        f.active.addnew(ListRecord{.Data = url, .path = f.path("f.bin"), .bytes = 1001});
        QTRY_VERIFY(f.transfer(1).redoActive());
        QCOMPARE(ScriptedHttpServer::rangeStart(server.requests().value(0)), 1000);
        // Of a chunked body, the size line is framing, not file.
        const int kept = (honourRange ? 31000 : 30000) - (chunked ? 7 : 0);

        f.transfer(1).redoTick();
        QTRY_COMPARE(f.status(1), DownloadStatus::Finished);
        QCOMPARE(ScriptedHttpServer::rangeStart(server.requests().value(1)), kept);
        QCOMPARE(f.read("f.bin"), Content);
        QCOMPARE(f.active.slot(1).allowredo, honourRange);
        QCOMPARE(f.active.slot(1).total, Content.size());
    }

    void redirects_data()
    {
        // To every request of /a/f.bin; %1 is the server, %2 a TLS server that sends every request
        // on to %1/c/f.bin.
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<QString>("end"); // the path the file came from, or the failure
        const auto row = [](const char *tag, const QByteArray &status, const QByteArray &location,
                            const QString &end) {
            QTest::newRow(tag) << "HTTP/1.1 " + status + "\r\n" + location + "\r\n\r\nmovido"
                               << end;
        };
        row("301 absolute", "301 Moved Permanently", "Location: %1/files/a.zip", "/files/a.zip");
        row("303 from the root, name in lower case", "303 See Other", "location: /files/a.zip",
            "/files/a.zip");
        row("307 a folder up", "307 Temporary Redirect", "Location: ../b.zip", "/b.zip");
        row("308 the same folder", "308 Permanent Redirect", "Location: c.zip", "/a/c.zip");
        QTest::newRow("to https and back, lines ended by LF")
            << QByteArray("HTTP/1.1 302 Found\nLocation: %2/b/f.bin\n\n") << "/c/f.bin";
        row("to itself", "302 Found", "Location: f.bin",
            "Demasiadas redirecciones al descargar %1.");
        row("another scheme", "301 Moved", "Location: javascript:alert(1)",
            "El servidor ha movido %1 a una dirección no válida.");
    }

    // Nothing of a redirect reaches the file; the eleventh of one attempt ends it.
    void redirects()
    {
        QFETCH(QByteArray, reply);
        QFETCH(QString, end);
        EngineFixture f;
        QString root;
        ScriptedHttpServer secure(
            [&](const QByteArray &, int) {
                return ScriptedHttpServer::status("HTTP/1.1 302 Found",
                                                  "Location: " + root.toLatin1() + "/c/f.bin\r\n");
            },
            m_local.configuration());
        ScriptedHttpServer server([&](const QByteArray &request, int) {
            return request.startsWith("GET /a/f.bin ")
                       ? HttpReply::of(QByteArray(reply)
                                           .replace("%1", root.toLatin1())
                                           .replace("%2", secure.url("").chopped(1).toLatin1()))
                       : ScriptedHttpServer::file(Content, request, false);
        });
        root = server.url("").chopped(1);
        const QString url = server.url("a/f.bin");
        f.add(url);
        QTRY_VERIFY(f.status(1) == DownloadStatus::Finished ||
                    f.status(1) == DownloadStatus::Exhausted);
        if (end.startsWith('/')) {
            QCOMPARE(f.read("f.bin"), Content);
            QVERIFY(server.requests().last().startsWith(
                QByteArray("GET " + end.toLatin1() + " HTTP/1.1\r\n")));
            QCOMPARE(f.active.slot(1).Data, root + end);
            return;
        }
        QCOMPARE(f.desktop.callsOf("showMessageWindow"), QStringList{end.arg(url) + "|"});
        QCOMPARE(server.requests().size(), end.startsWith("Demasiadas") ? 11 : 1);
        QVERIFY(!QFile::exists(f.path("f.bin")));
    }

    // The first reply's version goes with every resume; the server sends all of a file that changed
    // meanwhile, and nothing of the old one stays.
    void resumeOfAnotherVersion()
    {
        const QByteArray newer = randomBytes(30000);
        EngineFixture f;
        ScriptedHttpServer server([&](const QByteArray &request, int index) {
            HttpReply reply =
                ScriptedHttpServer::file(index == 0 ? Content : newer, request, false);
            reply.bytes.replace("\r\n\r\n", index == 0 ? "\r\nETag: \"v1\"\r\n\r\n"
                                                       : "\r\nETag: \"v2\"\r\n\r\n");
            reply.dropAfter = index == 0 ? reply.bytes.indexOf("\r\n\r\n") + 4 + 50000 : -1;
            return reply;
        });
        f.add(server.url("f.bin"));
        QTRY_VERIFY(f.transfer(1).redoActive());
        f.transfer(1).redoTick();
        QTRY_COMPARE(f.status(1), DownloadStatus::Finished);
        QVERIFY(
            server.requests().value(1).contains("\r\nRange: bytes=50000-\r\nIf-Range: \"v1\"\r\n"));
        QCOMPARE(f.read("f.bin"), newer);
        QCOMPARE(f.active.slot(1).extras.validator, "\"v2\"");
    }

    void namedByServer_data()
    {
        QTest::addColumn<QByteArray>("disposition");
        QTest::addColumn<QString>("name");
        QTest::newRow("taken") << QByteArray("attachment; filename=existe.txt") << "existe (1).txt";
        QTest::newRow("up and out")
            << QByteArray("inline; filename=\"../../.bashrc\"") << ".bashrc";
        QTest::newRow("dot dot") << QByteArray("attachment; filename=\"..\"") << "get.php";
    }

    // A new download takes the name its server gives, in its own folder, never over another file.
    void namedByServer()
    {
        QFETCH(QByteArray, disposition);
        QFETCH(QString, name);
        EngineFixture f;
        f.write("existe.txt", "mío");
        ScriptedHttpServer server([&](const QByteArray &request, int) {
            HttpReply reply = ScriptedHttpServer::file(Content, request, false);
            reply.bytes.replace("\r\n\r\n",
                                QByteArray("\r\nContent-Disposition: " + disposition + "\r\n\r\n"));
            return reply;
        });
        f.add(server.url("get.php?id=7"), "get.php");
        QTRY_COMPARE(f.status(1), DownloadStatus::Finished);
        QCOMPARE(f.active.slot(1).path, f.path(name));
        QCOMPARE(f.read(name), Content);
        // The empty file made before the reply came is gone.
        QCOMPARE(QFile::exists(f.path("get.php")), name == "get.php");
        QCOMPARE(f.read("existe.txt"), "mío");
    }

    // An IPv6 address, and a login in the address: sent as Basic, never shown.
    void ipv6AndLogin()
    {
        EngineFixture f;
        ScriptedHttpServer server(
            [](const QByteArray &request, int) {
                return ScriptedHttpServer::file(Content, request, false);
            },
            {}, QHostAddress::LocalHostIPv6);
        const QString url = server.url("f.bin");
        f.add(url.left(7) + "ana:s%40c%3Areta@" + url.mid(7));
        QTRY_COMPARE(f.status(1), DownloadStatus::Finished);
        QCOMPARE(f.read("f.bin"), Content);
        QVERIFY(server.requests().value(0).contains(
            QByteArray("\r\nHost: " + url.mid(7, url.indexOf('/', 7) - 7).toLatin1() + "\r\n")));
        const QByteArray basic =
            "\r\nAuthorization: Basic " + QByteArray("ana:s@c:reta").toBase64();
        QVERIFY(server.requests().value(0).contains(QByteArray(basic + "\r\n")));
        QCOMPARE(f.active.row(1).url, url);
    }

    void replyEnds_data()
    {
        QTest::addColumn<HttpReply>("reply");
        // "finished", "lost" (a retry is waiting), or the message of a final failure.
        QTest::addColumn<QString>("end");
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<qint64>("total");
        QTest::addColumn<QByteArray>("onDisk");   // before the download starts
        QTest::addColumn<QString>("certificate"); // none: plain HTTP
        const auto row = [](const char *tag, const HttpReply &reply, const QString &end,
                            const QByteArray &file, qint64 total = 0, const QByteArray &onDisk = {},
                            const QString &certificate = {}) {
            QTest::newRow(tag) << reply << end << file << total << onDisk << certificate;
        };
        row("404", HttpReply::of("HTTP/1.1 404 No\r\n\r\n"), "El archivo %1 no existe.", {});
        // A certificate refused is final at once: no reply is even asked for.
        const QString refused = "El certificado de seguridad de %1 no es válido: ";
        row("certificate signed by an authority not trusted", {},
            refused + "lo firma una autoridad desconocida.", {}, 0, {}, "untrusted");
        row("certificate made out to another name", {}, refused + "es de otro nombre de servidor.",
            {}, 0, {}, "misnamed");
        // No reply but a success reaches the file; a server that cannot answer now is asked again.
        row("403", HttpReply::of("HTTP/1.1 403 Forbidden\r\nContent-Length: 5\r\n\r\nnope!"),
            "El servidor ha rechazado la descarga de %1 (403 Forbidden).", QByteArray());
        row("503", HttpReply::of("HTTP/1.1 503 Busy\r\nRetry-After: 120\r\n\r\nlater"), "lost",
            QByteArray());
        const QByteArray ok100 = "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n";
        row("four short: lost", HttpReply::of(ok100 + Content.left(96)), "lost", Content.left(96),
            100);
        HttpReply kept = chunkedReply(Content, 30000);
        kept.stall = true;
        row("chunked: the last chunk ends it, open or not", kept, "finished", Content,
            Content.size());
        row("chunked, closed before the last chunk", chunkedReply(Content, 50000, ""), "lost",
            Content);
        // A size no download could still have left is no size: framing, not file. The bad framing
        // alone ends it: the server keeps the connection open.
        HttpReply hugeSize = chunkedReply(Content.left(1000), 1000, "1000000000000\r\n" + Content);
        hugeSize.stall = true;
        row("chunk size beyond any download", hugeSize, "lost", Content.left(1000));
        // A head of a megabyte is no head: nothing of it is written.
        const QByteArray huge = "HTTP/1.1 200 OK\r\n" +
                                QByteArray("X-Relleno: aaaaaaaaaaaaaaaa\r\n").repeated(40000) +
                                "\r\nhola";
        row("huge head", HttpReply::of(huge), "lost", QByteArray());
        // All of it there already: the server says so with 416.
        row("416",
            ScriptedHttpServer::status("HTTP/1.1 416 No", "Content-Range: bytes */200000\r\n"),
            "finished", Content, Content.size(), Content);
        row("head split",
            HttpReply{.chunks = {"HTT", "P/1.1 200 OK\r\nContent-Le", "ngth: 5\r\n\r", "\nhello"}},
            "finished", "hello", 5);
    }

    void replyEnds()
    {
        QFETCH(HttpReply, reply);
        QFETCH(QString, end);
        QFETCH(QByteArray, onDisk);
        QFETCH(QString, certificate);
        EngineFixture f;
        if (!onDisk.isEmpty())
            f.write("f.bin", onDisk);
        ScriptedHttpServer server([&](const QByteArray &, int) { return reply; },
                                  certificate.isEmpty()       ? QSslConfiguration()
                                  : certificate == "misnamed" ? m_misnamed.configuration()
                                                              : m_untrusted.configuration());
        QSignalSpy failed(&f.active, &ActiveList::downloadFailed);
        const QString url = server.url("f.bin");
        f.add(url);
        const auto ended = [&] {
            return f.status(1) == DownloadStatus::Finished ||
                   f.status(1) == DownloadStatus::Exhausted || f.transfer(1).redoActive();
        };
        QTRY_VERIFY_WITH_TIMEOUT(ended(), 10000);
        // A final failure waits for no retry, even a while later.
        QTest::qWait(end == "finished" || end == "lost" ? 0 : 100);
        QCOMPARE(f.status(1) == DownloadStatus::Finished, end == "finished");
        QCOMPARE(f.transfer(1).redoActive(), end == "lost");
        QTEST(f.active.slot(1).total, "total");
        QTEST(f.read("f.bin"), "file");
        if (end == "finished" || end == "lost")
            return;
        QCOMPARE(f.status(1), DownloadStatus::Exhausted);
        QVERIFY(!QFile::exists(f.path("f.bin")));
        QCOMPARE(f.desktop.callsOf("showMessageWindow"),
                 QStringList{(end.contains("%1") ? end.arg(url) : end) + "|"});
        QCOMPARE(failed.size(), 1);
        QCOMPARE(server.connections(), 1);
        QCOMPARE(server.requests().size(), certificate.isEmpty() ? 1 : 0);
    }

    void refusals_data()
    {
        QTest::addColumn<QByteArray>("command"); // answered with `reply` instead of the usual
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<QString>("end"); // "finished", or the message of the failure
        // Other bytes on disk: the whole file goes over them, and the download no longer resumes.
        QTest::newRow("REST refused")
            << QByteArray("REST") << QByteArray("502 No implementado\r\n") << "finished";
        // A file the server does not have fails at once, like a 404: no retry, no empty file.
        const QString missing = "El archivo %1 no existe.";
        QTest::newRow("no such folder")
            << QByteArray("CWD") << QByteArray("550 No existe\r\n") << missing;
        QTest::newRow("not retrievable")
            << QByteArray("RETR") << QByteArray("553 No permitido\r\n") << missing;
    }

    void refusals()
    {
        QFETCH(QByteArray, command);
        QFETCH(QByteArray, reply);
        QFETCH(QString, end);
        EngineFixture f;
        ScriptedFtpServer server(Content);
        server.answer = [&](const QByteArray &line) {
            return line.startsWith(command) ? std::optional(reply) : std::nullopt;
        };
        if (end == "finished")
            f.write("x.zip", QByteArray(5000, 'x'));
        const QString url = server.url("pub/x.zip");
        f.add(url, "x.zip", "anonymous", "freepwd");
        if (end == "finished") {
            QTRY_COMPARE(f.status(1), DownloadStatus::Finished);
            QCOMPARE(f.read("x.zip"), Content);
            QVERIFY(!f.active.slot(1).allowredo);
            return;
        }
        QTRY_COMPARE(f.status(1), DownloadStatus::Exhausted);
        QVERIFY(!f.transfer(1).redoActive());
        QCOMPARE(f.desktop.callsOf("showMessageWindow"), QStringList{end.arg(url) + "|"});
        QVERIFY(!QFile::exists(f.path("x.zip")));
    }

    void loginRefused()
    {
        // Both servers take only the password "buena".
        const auto onlyBuena = [](const QByteArray &line) {
            return line.startsWith("PASS") && line != "PASS buena"
                       ? std::optional<QByteArray>("530 Usuario incorrecto\r\n")
                       : std::nullopt;
        };
        EngineFixture f;
        ScriptedFtpServer server(Content);
        ScriptedFtpServer other(Content);
        server.answer = other.answer = onlyBuena;
        f.desktop.loginAnswers = {FtpCredentials{"ana", "buena", true}};
        // While the dialog is open a second download is refused too: it must not open another.
        f.desktop.whileAsking = [&] {
            f.add(other.url("y"), "y", "anonymous", "freepwd");
            QTRY_VERIFY(other.commandWords().contains("PASS freepwd"));
            QTest::qWait(100);
        };
        f.add(server.url("x"), "x", "anonymous", "freepwd");
        QTRY_VERIFY(f.transfer(1).redoActive());
        f.desktop.whileAsking = nullptr;
        QCOMPARE(f.desktop.callsOf("askFtpLogin"),
                 QStringList{"Usuario incorrecto.|anonymous|freepwd"});
        QVERIFY(f.active.slot(1).usernm == "ana" && f.active.slot(1).rememb);
        QCOMPARE(f.status(1), DownloadStatus::Connecting);

        // The retry logs in with the new credentials.
        f.transfer(1).redoTick();
        QTRY_COMPARE(f.status(1), DownloadStatus::Finished);
        QVERIFY(server.commandWords().contains("PASS buena"));
        QCOMPARE(f.read("x"), Content);
    }
};

QTEST_GUILESS_MAIN(TestEngine)
#include "tst_engine.moc"
