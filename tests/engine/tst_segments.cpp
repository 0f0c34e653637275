// Downloads in parts over several connections against a scripted server that serves ranges,
// and the arithmetic of the parts.
#include "enginefixture.h"
#include "partplan.h"
#include "scriptedhttpserver.h"

#include <QTest>

namespace {

constexpr qint64 MiB = 1024 * 1024;

// "Range: bytes=A-B" of a request: A and B, B -1 when open.
std::pair<qint64, qint64> rangeOf(const QByteArray &request)
{
    static const QRegularExpression Range(QStringLiteral("Range: bytes=(\\d+)-(\\d*)"));
    const QRegularExpressionMatch match = Range.match(QString::fromLatin1(request));
    const QString last = match.captured(2);
    return {match.captured(1).toLongLong(), last.isEmpty() ? -1 : last.toLongLong()};
}

// `content` as a server that knows ranges sends it: 206 with Content-Range and its version,
// or 200 with all of it when If-Range names another version.
HttpReply ranged(const QByteArray &content, const QByteArray &version, const QByteArray &request)
{
    const qsizetype ifRange = request.indexOf("If-Range: ");
    if (ifRange >= 0 && request.mid(ifRange + 10, version.size()) != version)
        return HttpReply::of("HTTP/1.1 200 OK\r\nETag: " + version + "\r\nContent-Length: " +
                             QByteArray::number(content.size()) + "\r\n\r\n" + content);
    auto [first, last] = rangeOf(request);
    if (last < 0 || last >= content.size())
        last = content.size() - 1;
    return HttpReply::of("HTTP/1.1 206 Partial Content\r\nETag: " + version +
                         "\r\nContent-Range: bytes " + QByteArray::number(first) + '-' +
                         QByteArray::number(last) + '/' + QByteArray::number(content.size()) +
                         "\r\nContent-Length: " + QByteArray::number(last - first + 1) +
                         "\r\n\r\n" + content.mid(first, last - first + 1));
}

// Sent a piece at a time: a download still runs when its list is saved and its parts begin.
void pace(HttpReply &reply, qsizetype piece, int gapMs)
{
    for (qsizetype at = 0; at < reply.bytes.size(); at += piece)
        reply.chunks << reply.bytes.mid(at, piece);
    reply.gapMs = gapMs;
}

qint64 headSize(const HttpReply &reply)
{
    return reply.bytes.indexOf("\r\n\r\n") + 4;
}

} // namespace

class TestSegments : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void plan_data();
    void plan();
    void faults_data();
    void faults();
    void pauseAsksOnlyForWhatIsMissing();
};

void TestSegments::plan_data()
{
    QTest::addColumn<QString>("saved");
    QTest::addColumn<int>("takes"); // free connections asking for work
    QTest::addColumn<QString>("after");
    // A free connection takes a part nobody fetches first, then half of the largest one.
    QTest::newRow("idle parts first") << "64:0-16,32-40" << 2 << "64:0-16,32-40";
    QTest::newRow("half of the largest") << "64:0-16,32-40" << 3 << "64:0-8,8-16,32-40";
    QTest::newRow("never under the minimum") << "64:0-7,32-39" << 3 << "64:0-7,32-39";
    QTest::newRow("overlapping parts: no plan") << "64:0-16,8-20" << 0 << "";
    QTest::newRow("past the end: no plan") << "64:60-70" << 0 << "";
    QTest::newRow("another size: no plan") << "65:0-16" << 0 << "";
    QTest::newRow("not numbers: no plan") << "64:a-b" << 0 << "";
}

void TestSegments::plan()
{
    QFETCH(QString, saved);
    QFETCH(int, takes);
    QFETCH(QString, after);
    // The texts give offsets in MiB.
    const auto inBytes = [](const QString &text) -> QString {
        static const QRegularExpression Number(QStringLiteral("\\d+"));
        QString bytes;
        qsizetype from = 0;
        for (const QRegularExpressionMatch &match : Number.globalMatch(text)) {
            bytes += text.mid(from, match.capturedStart() - from) +
                     QString::number(match.captured().toLongLong() * MiB);
            from = match.capturedEnd();
        }
        return bytes + text.mid(from);
    };
    PartPlan plan = PartPlan::fromText(inBytes(saved), 64 * MiB);
    for (int i = 0; i < takes; ++i)
        plan.take();
    QCOMPARE(plan.isEmpty() ? QString() : plan.toText(), inBytes(after));
}

void TestSegments::faults_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<int>("connections");
    QTest::addColumn<int>("size"); // MiB
    QTest::newRow("none") << "none" << 3 << 48;
    QTest::newRow("a connection dropped mid-part") << "drop" << 3 << 48;
    QTest::newRow("a connection silent mid-part") << "stall" << 3 << 48;
    QTest::newRow("the third connection refused") << "503" << 3 << 48;
    QTest::newRow("later connections get all of it") << "200" << 3 << 48;
    QTest::newRow("the file changes") << "changed" << 3 << 48;
    QTest::newRow("other bytes than asked") << "shifted" << 3 << 48;
    QTest::newRow("a part ends early") << "short" << 3 << 48;
    QTest::newRow("more bytes than asked") << "overlap" << 3 << 48;
    QTest::newRow("a slow part is shared") << "slow" << 2 << 48;
    QTest::newRow("too small to split") << "none" << 16 << 5;
}

// Whatever the server does, the file is the server's bytes once the download says it is done.
void TestSegments::faults()
{
    QFETCH(QString, fault);
    QFETCH(int, connections);
    QFETCH(int, size);
    EngineFixture f;
    f.settings.segsv = 1;
    f.settings.waitv = 2;
    f.active.setConnections(connections);
    const QByteArray first = randomBytes(int(size * MiB));
    QByteArray content = first;
    QByteArray version = "\"v1\"";
    ScriptedHttpServer server([&](const QByteArray &request, int index) {
        HttpReply reply = ranged(content, version, request);
        const auto [from, to] = rangeOf(request);
        if (index == 1 && (fault == "drop" || fault == "stall")) {
            reply.dropAfter = headSize(reply) + MiB;
            reply.stall = fault == "stall";
        }
        if (index == 2 && fault == "503")
            reply = ScriptedHttpServer::status("HTTP/1.1 503 Service Unavailable");
        if (index >= 1 && fault == "200")
            reply = ScriptedHttpServer::file(content, request, false);
        if (index == 1 && fault == "changed") {
            content = randomBytes(int(size * MiB) + 1);
            version = "\"v2\"";
        }
        if (index == 1 && fault == "shifted")
            reply = ranged(content, version,
                           "Range: bytes=" + QByteArray::number(from + 1) + '-' +
                               QByteArray::number(to));
        if (index == 1 && fault == "short")
            reply = ranged(content, version,
                           "Range: bytes=" + QByteArray::number(from) + '-' +
                               QByteArray::number(from + MiB));
        if (index == 1 && fault == "overlap")
            reply = ranged(content, version, "Range: bytes=" + QByteArray::number(from) + '-');
        if (index == 0)
            pace(reply, MiB, 40);
        if (index == 1 && fault == "slow")
            pace(reply, 512 * 1024, 120);
        return reply;
    });
    const int i = f.add(server.url("f.bin"));
    QTRY_VERIFY_WITH_TIMEOUT(
        f.status(i) == DownloadStatus::Finished || f.status(i) == DownloadStatus::Exhausted, 30000);
    QCOMPARE(f.status(i), DownloadStatus::Finished);
    QVERIFY(f.read("f.bin") == content);
    QVERIFY(f.active.slot(i).extras.parts.isEmpty());

    const QList<QByteArray> &requests = server.requests();
    QVERIFY(requests[0].contains("Range: bytes=0-\r\n"));
    if (size * MiB < 2 * PartPlan::MinPart)
        QCOMPARE(requests.size(), 1);
    if (fault == "none" && size == 48)
        QVERIFY(requests.size() >= connections);
    if (fault == "slow") {
        // A connection that was done took over the second half of the slow part.
        const qint64 slowStart = rangeOf(requests[1]).first;
        QVERIFY(std::any_of(requests.begin() + 2, requests.end(),
                            [&](const QByteArray &r) { return rangeOf(r).first > slowStart; }));
    }
}

// A paused download keeps its parts, and asks again only for bytes it does not have.
void TestSegments::pauseAsksOnlyForWhatIsMissing()
{
    EngineFixture f;
    f.settings.segsv = 1;
    f.active.setConnections(4);
    const QByteArray content = randomBytes(int(32 * MiB));
    bool stalling = true;
    ScriptedHttpServer server([&](const QByteArray &request, int) {
        HttpReply reply = ranged(content, "\"v1\"", request);
        if (stalling) {
            reply.dropAfter = headSize(reply) + MiB;
            reply.stall = true;
        }
        return reply;
    });
    const int i = f.add(server.url("f.bin"));
    QTRY_COMPARE_WITH_TIMEOUT(f.active.slot(i).bytes - 1, 4 * MiB, 10000);
    f.transfer(i).stop();
    const QString saved = f.active.slot(i).extras.parts;
    const PartPlan plan = PartPlan::fromText(saved, content.size());
    QCOMPARE(plan.fetched(), 4 * MiB);
    const qsizetype before = server.requests().size();
    stalling = false;
    f.transfer(i).restart(5);
    QTRY_COMPARE_WITH_TIMEOUT(f.status(i), DownloadStatus::Finished, 20000);
    QVERIFY(f.read("f.bin") == content);
    for (const QByteArray &request : server.requests().mid(before)) {
        const qint64 start = rangeOf(request).first;
        QVERIFY2(std::any_of(plan.parts().begin(), plan.parts().end(),
                             [start](const PartPlan::Part &part) {
                                 return start >= part.next && start < part.end;
                             }),
                 qPrintable(saved + " asked again from " + QString::number(start)));
    }
}

QTEST_GUILESS_MAIN(TestSegments)
#include "tst_segments.moc"
