#include "enginefixture.h"
#include "localservers.h"
#include "scriptedhttpserver.h"
#include "testauthority.h"
#include "transfer.h"

#include <QSignalSpy>
#include <QSslServer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>
#include <unistd.h>

namespace {

const QByteArray Content = randomBytes(200000);
// Chunks of 1, 7, 8192 and 1 MiB bytes.
const QByteArray Big = randomBytes(1 + 7 + 8192 + 1024 * 1024);

// `content` as a chunked body, in chunks of `sizes` (the last size repeated), cut wherever a
// reader could trip: inside a size line, between its CR and LF, just inside the data, between
// the data and its line end.
QList<QByteArray> chunkedPieces(const QByteArray &content, const QList<int> &sizes,
                                const QByteArray &ending = "0\r\nX-Suma: 7\r\n\r\n")
{
    QByteArray framed;
    QList<qsizetype> cuts;
    for (qsizetype at = 0, i = 0; at < content.size(); ++i) {
        const QByteArray data = content.mid(at, sizes[std::min(i, sizes.size() - 1)]);
        const QByteArray sizeLine = QByteArray::number(data.size(), 16) + "\r\n";
        cuts << framed.size() + 1 << framed.size() + sizeLine.size() - 1
             << framed.size() + sizeLine.size() + 1
             << framed.size() + sizeLine.size() + data.size() + 1;
        framed += sizeLine + data + "\r\n";
        at += data.size();
    }
    framed += ending;
    QList<QByteArray> pieces{"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"};
    qsizetype from = 0;
    for (const qsizetype cut : cuts) {
        if (cut > from && cut < framed.size())
            pieces << framed.mid(from, cut - from);
        from = std::max(from, cut);
    }
    pieces << framed.mid(from);
    return pieces;
}

HttpReply inPieces(const QList<QByteArray> &pieces)
{
    HttpReply reply;
    reply.chunks = pieces;
    return reply;
}

// A file, as a whole reply (206 or 200), chunked when asked; dropped after `dropAfter` bytes of
// body on the first request.
ScriptedHttpServer::Handler servingFile(bool honourRange, bool chunked, qint64 dropAfter = -1)
{
    return [=](const QByteArray &request, int index) {
        HttpReply reply = ScriptedHttpServer::file(Content, request, honourRange, !chunked);
        if (chunked) {
            const qsizetype body = reply.bytes.indexOf("\r\n\r\n") + 4;
            const QByteArray rest = reply.bytes.mid(body);
            reply.bytes = reply.bytes.left(body - 2) + "Transfer-Encoding: chunked\r\n\r\n" +
                          QByteArray::number(rest.size(), 16) + "\r\n" + rest + "\r\n0\r\n\r\n";
        }
        if (index == 0 && dropAfter >= 0)
            reply.dropAfter = reply.bytes.indexOf("\r\n\r\n") + 4 + dropAfter;
        return reply;
    };
}

} // namespace

class TestHttp : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void resumeAfterDrop_data();
    void resumeAfterDrop();
    void redirectsAcrossSchemes();
    void finalAnswers_data();
    void finalAnswers();
    void secureFailures_data();
    void secureFailures();
    void replyEnds_data();
    void replyEnds();
    void realServer_data();
    void realServer();

private:
    TestAuthority m_trusted;
    ServerCertificate m_local;
};

void TestHttp::initTestCase()
{
    // The engine reads the variable once, at its first secure connection.
    qputenv("SSL_CERT_FILE", m_trusted.certificateFile().toLocal8Bit());
    m_local = m_trusted.issue("local", "IP:127.0.0.1,DNS:localhost");
    QVERIFY2(m_trusted.ok(), qPrintable(m_trusted.error()));
}

void TestHttp::resumeAfterDrop_data()
{
    QTest::addColumn<bool>("honourRange");
    QTest::addColumn<bool>("chunked");
    QTest::addColumn<bool>("secure");
    QTest::newRow("206: continues") << true << false << false;
    QTest::newRow("200: starts again from the first byte") << false << false << false;
    QTest::newRow("chunked 206: continues") << true << true << false;
    QTest::newRow("chunked 200: starts again") << false << true << false;
    QTest::newRow("https 206: continues") << true << false << true;
}

void TestHttp::resumeAfterDrop()
{
    QFETCH(bool, honourRange);
    QFETCH(bool, chunked);
    QFETCH(bool, secure);
    EngineFixture f;
    const auto serve = servingFile(honourRange, chunked, 30000);
    ScriptedHttpServer plain(serve);
    ScriptedHttpServer tls(serve, m_local.configuration());
    ScriptedHttpServer &server = secure ? tls : plain;
    QSignalSpy status(&f.active, &ActiveList::statusText);
    const QString url = server.url("dir/f.bin");
    f.active.addnew(url, f.path("f.bin"), 0, 0, false, 0, false, "", "", false);
    QTRY_VERIFY(f.active.transferAt(1)->redoActive());
    // Plain or secure, the same request; a fresh download asks for its whole range.
    QCOMPARE(server.requests().value(0),
             "GET /dir/f.bin HTTP/1.1\r\nUser-Agent: Corvane\r\nHost: 127.0.0.1\r\n"
             "Connection: close\r\nRange: bytes=0-\r\n\r\n");
    QCOMPARE(status.last().at(1).toString(),
             "Se ha perdido la conexión con " + url + " . Reconectando...");
    QVERIFY(f.row(1).reconectando());
    QVERIFY(!f.row(1).finalizado());
    // Of a chunked body, the size line is framing, not file.
    QCOMPARE(f.active.slotAt(1).bytes, chunked ? 30001 - 7 : 30001);

    f.active.transferAt(1)->redoTick();
    QTRY_VERIFY(f.row(1).finalizado());
    QCOMPARE(ScriptedHttpServer::rangeStart(server.requests().value(1)), chunked ? 29993 : 30000);
    QCOMPARE(f.read("f.bin"), Content);
    QCOMPARE(f.active.slotAt(1).allowredo, honourRange);
    QCOMPARE(f.active.slotAt(1).total, Content.size());
    QCOMPARE(f.active.transferAt(1)->redoBudget(), 4);
    QCOMPARE(f.row(1).porcentaje(), 100);
    QCOMPARE(f.history.lines.size(), 1);
    QVERIFY(f.history.lines[0].startsWith("\r\nLa descarga de " + url + " a " + f.path("f.bin") +
                                          " ha finalizado tras "));
}

void TestHttp::redirectsAcrossSchemes()
{
    EngineFixture f;
    // http -> https -> http, the first Location ended by LF LF, the second by CR LF.
    ScriptedHttpServer target(servingFile(true, false));
    ScriptedHttpServer secure(
        [&](const QByteArray &, int) {
            return ScriptedHttpServer::status(
                "HTTP/1.1 302 Found", "Location: " + target.url("c/f.bin").toLatin1() + "\r\n");
        },
        m_local.configuration());
    ScriptedHttpServer first([&](const QByteArray &, int) {
        return HttpReply::of("HTTP/1.1 302 Found\nLocation: " + secure.url("b/f.bin").toLatin1() +
                             "\n\n");
    });
    QSignalSpy status(&f.active, &ActiveList::statusText);
    const QString url = first.url("a/f.bin");
    f.active.addnew(url, f.path("f.bin"), 0, 0, false, 0, false, "", "", false);
    QTRY_VERIFY(f.row(1).finalizado());
    QCOMPARE(status.first().at(1).toString(), "El archivo " + url + " ha sido movido a " +
                                                  secure.url("b/f.bin") +
                                                  ".Se reconectará a esa dirección");
    QVERIFY(secure.requests().value(0).startsWith("GET /b/f.bin HTTP/1.1\r\n"));
    QVERIFY(target.requests().value(0).startsWith("GET /c/f.bin HTTP/1.1\r\n"));
    QCOMPARE(f.active.slotAt(1).Data, target.url("c/f.bin"));
    QCOMPARE(f.read("f.bin"), Content);
}

void TestHttp::finalAnswers_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("message"); // empty: the body is the download
    QTest::newRow("301 body written")
        << QByteArray("HTTP/1.1 301 Moved\r\nContent-Length: 5\r\n\r\nmoved") << "";
    QTest::newRow("403 not singled out")
        << QByteArray("HTTP/1.1 403 Forbidden\r\nContent-Length: 5\r\n\r\nnope!") << "";
    QTest::newRow("404") << QByteArray("HTTP/1.1 404 Not Found\r\n\r\n")
                         << "El archivo %1 no existe.";
    QTest::newRow("401") << QByteArray("HTTP/1.1 401 No\r\n\r\n") << "Acceso denegado al archivo";
    QTest::newRow("500") << QByteArray("HTTP/1.1 500 Mal\r\n\r\n")
                         << "Error interno del servidor %1.";
    QTest::newRow("400") << QByteArray("HTTP/1.1 400 Mal\r\n\r\n")
                         << "Error de sintaxis en la petición";
}

void TestHttp::finalAnswers()
{
    QFETCH(QByteArray, reply);
    QFETCH(QString, message);
    EngineFixture f;
    ScriptedHttpServer server([&](const QByteArray &, int) { return HttpReply::of(reply); });
    const QString url = server.url("f.bin");
    QSignalSpy failed(&f.active, &ActiveList::downloadFailed);
    f.active.addnew(url, f.path("f.bin"), 0, 0, false, 0, false, "", "", false);
    if (message.isEmpty()) {
        QTRY_VERIFY(f.row(1).finalizado());
        QCOMPARE(f.read("f.bin"), reply.mid(reply.indexOf("\r\n\r\n") + 4));
        QVERIFY(!f.active.slotAt(1).allowredo);
        return;
    }
    QTRY_VERIFY(f.row(1).redoend());
    const QString text = message.contains("%1") ? message.arg(url) : message;
    QCOMPARE(f.desktop.callsOf("showMessageWindow"), QStringList{text + "|"});
    QCOMPARE(failed.size(), 1);
    // Final: no retry is waiting and nothing was written.
    QTest::qWait(50);
    QVERIFY(!f.active.transferAt(1)->redoActive());
    QCOMPARE(server.requests().size(), 1);
    QCOMPARE(f.read("f.bin"), QByteArray());
    QVERIFY(!f.row(1).finalizado());
}

void TestHttp::secureFailures_data()
{
    QTest::addColumn<QString>("server");
    QTest::addColumn<QString>("reason"); // empty: not final, a retry waits
    QTest::newRow("signed by an authority not trusted") << "other authority"
                                                        << "lo firma una autoridad desconocida";
    QTest::newRow("made out to another name") << "other name"
                                              << "es de otro nombre de servidor";
    QTest::newRow("no handshake ever: the silence rule") << "silent"
                                                         << "";
    QTest::newRow("plain text instead of a handshake") << "plain text"
                                                       << "";
    QTest::newRow("garbage after the handshake") << "garbage"
                                                 << "";
}

void TestHttp::secureFailures()
{
    QFETCH(QString, server);
    QFETCH(QString, reason);
    TestAuthority other;
    const ServerCertificate certificate =
        server == "other authority" ? other.issue("otra", "IP:127.0.0.1")
        : server == "other name"    ? m_trusted.issue("otro", "DNS:otro.invalid")
                                    : m_local;
    QVERIFY2(other.ok() && m_trusted.ok(), qPrintable(other.error() + m_trusted.error()));
    ScriptedHttpServer tls(servingFile(true, false), certificate.configuration());
    // A server that says nothing, answers in plain text, or sends bytes that are no TLS record
    // once the handshake is done.
    auto raw =
        server == "garbage" ? std::make_unique<QSslServer>() : std::make_unique<QTcpServer>();
    if (server == "garbage")
        static_cast<QSslServer &>(*raw).setSslConfiguration(m_local.configuration());
    raw->listen(QHostAddress::LocalHost, 0);
    int rawConnections = 0;
    connect(raw.get(), &QTcpServer::pendingConnectionAvailable, raw.get(), [&] {
        ++rawConnections;
        QTcpSocket *socket = raw->nextPendingConnection();
        if (server == "plain text")
            socket->write("HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\nhola");
        if (server == "garbage") {
            [[maybe_unused]] const auto sent =
                ::write(int(socket->socketDescriptor()), "HTTP/1.1 200 OK\r\n\r\nhola", 23);
        }
    });
    EngineFixture f;
    f.settings.waitv = 5;
    QSignalSpy status(&f.active, &ActiveList::statusText);
    QSignalSpy failed(&f.active, &ActiveList::downloadFailed);
    const QString url = reason.isEmpty()
                            ? QStringLiteral("https://127.0.0.1:%1/f.bin").arg(raw->serverPort())
                            : tls.url("f.bin");
    f.active.addnew(url, f.path("f.bin"), 0, 0, false, 0, false, "", "", false);
    Transfer &transfer = *f.active.transferAt(1);
    if (server == "silent") {
        QTRY_COMPARE(rawConnections, 1);
        for (int second = 0; second < 6; ++second)
            f.active.tiempotransTick();
    }
    QTRY_VERIFY(f.row(1).redoend() || transfer.redoActive());
    // Nothing could pass for the download.
    QCOMPARE(f.read("f.bin"), QByteArray());
    QVERIFY(!f.row(1).finalizado());
    QCOMPARE(f.row(1).redoend(), !reason.isEmpty());
    if (reason.isEmpty())
        return;
    const QString text = "El certificado de seguridad de " + url + " no es válido: " + reason + ".";
    QCOMPARE(status.last().at(0).toInt(), 3);
    QCOMPARE(status.last().at(1).toString(), text);
    QCOMPARE(f.desktop.callsOf("showMessageWindow"), QStringList{text + "|"});
    QCOMPARE(failed.size(), 1);
    // Final at once: one connection, no retry waiting, and not even an empty file.
    QTest::qWait(100);
    QCOMPARE(tls.connections(), 1);
    QVERIFY(!transfer.redoActive());
    QVERIFY(!QFile::exists(f.path("f.bin")));
}

void TestHttp::replyEnds_data()
{
    QTest::addColumn<HttpReply>("reply");
    QTest::addColumn<bool>("finished");           // else lost: a retry is waiting
    QTest::addColumn<QList<QByteArray>>("files"); // what the file may hold
    QTest::addColumn<qint64>("total");

    const QByteArray ok100 = "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n";
    QTest::newRow("no length: the close ends it")
        << ScriptedHttpServer::file(Content, "", false, false) << true << QList<QByteArray>{Content}
        << qint64(0);
    QTest::newRow("three short of the length: finished")
        << HttpReply::of(ok100 + Content.left(97)) << true << QList<QByteArray>{Content.left(97)}
        << qint64(100);
    QTest::newRow("four short: lost") << HttpReply::of(ok100 + Content.left(96)) << false
                                      << QList<QByteArray>{Content.left(96)} << qint64(100);
    QTest::newRow("chunked, cut anywhere")
        << inPieces(chunkedPieces(Big, {1, 7, 8192, 1024 * 1024})) << true << QList<QByteArray>{Big}
        << qint64(Big.size());
    HttpReply kept = inPieces(chunkedPieces(Content, {30000}));
    kept.stall = true;
    QTest::newRow("chunked: the last chunk ends it, open or not")
        << kept << true << QList<QByteArray>{Content} << qint64(Content.size());
    QTest::newRow("chunked, closed before the last chunk")
        << inPieces(chunkedPieces(Content, {50000}, "")) << false << QList<QByteArray>{Content}
        << qint64(0);
    QTest::newRow("chunked, size line not hexadecimal")
        << inPieces(chunkedPieces(Content.left(10), {5}, "zz\r\n")) << false
        << QList<QByteArray>{Content.left(10)} << qint64(0);

    QTest::newRow("garbage is the file")
        << HttpReply::of(QByteArray("\x00\xff garbage \r\n\r\n", 15)) << true
        << QList<QByteArray>{QByteArray("\x00\xff garbage \r\n\r\n", 15)} << qint64(0);
    // However the megabyte of head is cut into chunks, nothing breaks: a first chunk without
    // the blank line is written whole, like everything after it.
    const QByteArray huge = "HTTP/1.1 200 OK\r\n" +
                            QByteArray("X-Relleno: aaaaaaaaaaaaaaaa\r\n").repeated(40000) +
                            "\r\nhola";
    QTest::newRow("huge head") << HttpReply::of(huge) << true << QList<QByteArray>{"hola", huge}
                               << qint64(0);
    HttpReply closed;
    closed.closeAtOnce = true;
    QTest::newRow("closed at once")
        << closed << true << QList<QByteArray>{QByteArray()} << qint64(0);
    QTest::newRow("head split: each chunk as it comes")
        << inPieces({"HTTP/1.1 200 OK\r\nContent-Le", "ngth: 5\r\n\r\nhello"}) << true
        << QList<QByteArray>{"HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nhello"} << qint64(0);
}

void TestHttp::replyEnds()
{
    QFETCH(HttpReply, reply);
    QFETCH(bool, finished);
    EngineFixture f;
    ScriptedHttpServer server([&](const QByteArray &, int) { return reply; });
    f.active.addnew(server.url("f.bin"), f.path("f.bin"), 0, 0, false, 0, false, "", "", false);
    QTRY_VERIFY_WITH_TIMEOUT(f.row(1).finalizado() || f.active.transferAt(1)->redoActive(), 10000);
    QCOMPARE(f.row(1).finalizado(), finished);
    QTEST(f.active.slotAt(1).total, "total");
    QFETCH(QList<QByteArray>, files);
    QVERIFY(files.contains(f.read("f.bin")));
}

void TestHttp::realServer_data()
{
    QTest::addColumn<bool>("secure");
    QTest::newRow("http") << false;
    QTest::newRow("https") << true;
}

void TestHttp::realServer()
{
    QFETCH(bool, secure);
    const ServedFolder served("grande.bin", 3 * 1024 * 1024 + 17);
    const QByteArray &big = served.bytes;
    const auto nginx = secure ? std::make_unique<NginxServer>(served.root.path(), m_local)
                              : std::make_unique<NginxServer>(served.root.path());
    QVERIFY2(nginx->start(), qPrintable(nginx->error()));

    EngineFixture f;
    f.active.addnew(nginx->url("grande.bin"), f.path("nuevo.bin"), 0, 0, false, 0, false, "", "",
                    false);
    // A partial file whose resume flag was saved as off: the 206 decides where bytes go.
    f.write("parcial.bin", big.left(1234567));
    f.active.addnew(nginx->url("grande.bin"), f.path("parcial.bin"), 0, 1234568, false, 0, false,
                    "", "", false);
    QTRY_VERIFY_WITH_TIMEOUT(f.row(1).finalizado() && f.row(2).finalizado(), 20000);
    QCOMPARE(f.read("nuevo.bin"), big);
    QCOMPARE(f.read("parcial.bin"), big);
    QCOMPARE(f.active.slotAt(2).bytesinicio, 1234568);
}

QTEST_GUILESS_MAIN(TestHttp)
#include "tst_http.moc"
