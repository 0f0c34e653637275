// HTTP, HTTPS and FTP downloads end to end against the scripted servers: the bytes asked for,
// the file written, the messages shown. For FTP, the answers stock servers rarely give; the stock
// servers, with resuming, anonymous logins and escaped names, are in tst_realtimers. How replies
// cut apart or run together are read is in tst_engine.
#include "enginefixture.h"
#include "localservers.h"
#include "scriptedftpserver.h"
#include "scriptedhttpserver.h"
#include "testauthority.h"

#include <QSignalSpy>
#include <QTest>

namespace {

const QByteArray Content = randomBytes(200000);

// `content` as a chunked reply in chunks of `size` bytes, ended by `ending`.
HttpReply chunked(const QByteArray &content, int size,
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

class TestTransfers : public QObject
{
    Q_OBJECT

    TestAuthority m_trusted, m_other;
    ServerCertificate m_local, m_untrusted, m_misnamed;

private Q_SLOTS:
    void initTestCase()
    {
        // The engine reads the variable once, at its first secure connection.
        qputenv("SSL_CERT_FILE", m_trusted.certificateFile().toLocal8Bit());
        m_local = m_trusted.issue("local", "IP:127.0.0.1,DNS:localhost");
        m_misnamed = m_trusted.issue("otro", "DNS:otro.invalid");
        m_untrusted = m_other.issue("otro", "IP:127.0.0.1");
        QVERIFY2(m_trusted.ok() && m_other.ok(), qPrintable(m_trusted.error() + m_other.error()));
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
        HttpReply kept = chunked(Content, 30000);
        kept.stall = true;
        row("chunked: the last chunk ends it, open or not", kept, "finished", Content,
            Content.size());
        row("chunked, closed before the last chunk", chunked(Content, 50000, ""), "lost", Content);
        // A size no download could still have left is no size: framing, not file. The bad framing
        // alone ends it: the server keeps the connection open.
        HttpReply hugeSize = chunked(Content.left(1000), 1000, "1000000000000\r\n" + Content);
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
        const DownloadSlot &slot = f.active.slot(1);
        QCOMPARE(slot.usernm, QStringLiteral("ana"));
        QVERIFY(slot.rememb);
        QCOMPARE(f.status(1), DownloadStatus::Connecting);

        // The retry logs in with the new credentials.
        f.transfer(1).redoTick();
        QTRY_COMPARE(f.status(1), DownloadStatus::Finished);
        QVERIFY(server.commandWords().contains("PASS buena"));
        QCOMPARE(f.read("x"), Content);
    }
};

QTEST_GUILESS_MAIN(TestTransfers)
#include "tst_transfers.moc"
