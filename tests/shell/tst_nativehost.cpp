#include "corvaneprocess.h"
#include "nativehost.h"
#include "scriptedhttpserver.h"
#include "settingsfixture.h"
#include "xserver.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QLockFile>
#include <QTest>
#include <QtEndian>
#include <csignal>

namespace {

QByteArray framed(const QByteArray &bytes)
{
    QByteArray length(4, Qt::Uninitialized);
    qToUnaligned(quint32(bytes.size()), length.data());
    return length + bytes;
}

// The host as the browser starts it (with the extension's origin after the option), fed
// `input`; each answer as "ok" (and the endings it lists) or its error.
QStringList answersTo(const QString &home, const QByteArray &input, const QProcessEnvironment &env)
{
    CorvaneProcess host({"--home", home, "--native-host", "chrome-extension://x/"}, env);
    host.write(input);
    host.closeWriteChannel();
    host.waitForExit(60000);
    QStringList answers;
    for (QByteArray out = host.readAllStandardOutput(); out.size() >= 4;) {
        const quint32 length = qFromUnaligned<quint32>(out.constData());
        const QJsonObject answer = QJsonDocument::fromJson(out.mid(4, length)).object();
        QStringList ok{"ok"};
        for (const QJsonValue &ending : answer["extensions"].toArray())
            ok << ending.toString();
        answers << (answer["ok"].toBool() ? ok.join(' ') : answer["error"].toString());
        out.remove(0, 4 + length);
    }
    return answers;
}

// The program a host started: it is no child of the test, so it is found by its lock.
qint64 programOf(const QString &home)
{
    qint64 pid = 0;
    QLockFile(home + "/corvane.lock").getLockInfo(&pid, nullptr, nullptr);
    return pid;
}

} // namespace

class TestNativeHost : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void startsTheProgram();
    void answers_data();
    void answers();
    void onlyGoodLinksAdded();
    void cleanupTestCase();

private:
    XServer m_x;
    SettingsFixture m_home;
    QTemporaryDir m_idle; // no program ever runs here
    // Downloads stay in the list: a little of each file, then silence.
    ScriptedHttpServer m_server{[](const QByteArray &request, int) {
        if (request.startsWith("GET /enlaces.html"))
            return ScriptedHttpServer::status("HTTP/1.1 200 OK", "Connection: close\r\n",
                                              "<a href=\"x.zip\">x</a>");
        HttpReply reply = ScriptedHttpServer::file(QByteArray(100000, 'c'), request, true);
        reply.dropAfter = 1000;
        reply.stall = true;
        return reply;
    }};
};

void TestNativeHost::initTestCase()
{
    QVERIFY2(m_x.start(), qPrintable(m_x.error()));
    QVERIFY(m_home.saveQuiet());
    for (const QString &home : {m_home.folder(), m_idle.path()}) {
        QFile endings(home + "/listado.lst");
        QVERIFY(endings.open(QIODevice::WriteOnly));
        endings.write("exe\r\n\r\n.pdf\r\n");
    }
}

void TestNativeHost::startsTheProgram()
{
    // No program runs: the host starts one and hands it the link.
    const QString add = R"({"action":"add","url":"%1a.zip","referrer":"%1p.html","cookie":"s=1"})";
    QCOMPARE(
        answersTo(m_home.folder(), framed(add.arg(m_server.url("")).toUtf8()), m_x.environment()),
        QStringList{"ok"});
    QVERIFY(programOf(m_home.folder()) > 0);
    QTRY_VERIFY_WITH_TIMEOUT(m_home.read("activas.dwn").contains(m_server.url("a.zip").toUtf8()),
                             20000);
}

void TestNativeHost::answers_data()
{
    QTest::addColumn<bool>("running");
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<QStringList>("expected");
    // A message as JSON text; "S/" stands for the server's address.
    const auto message = [this](const QString &json) {
        return framed(QString(json).replace("S/", m_server.url("")).toUtf8());
    };
    QStringList thousand;
    for (int i = 0; i < 1000; ++i)
        thousand << QString("S/malo%1.zip").arg(i);
    const QString badAddress = "La dirección contiene caracteres no válidos.";
    const QString notOurs = "Corvane solo descarga direcciones http://, https:// o ftp://.";

    // The bad with no program (nothing may start it), the good with the running one.
    const struct
    {
        const char *name;
        QByteArray input;
        QStringList expected;
        bool good = false;
    } rows[] = {
        {"extensions",
         message(R"({"action":"extensions"})"),
         {"ok exe zip ace tar iso bmp gif jpg .pdf"}},
        {"oversized, then read on",
         framed(QByteArray(NativeHost::MaxMessage + 1, ' ')) + message(R"({"action":"x"})"),
         {"El mensaje ocupa más de 1 MB.", "Acción desconocida: \"x\"."}},
        {"truncated length",
         QByteArray("\x10\0", 2),
         {"El mensaje llegó cortado: su longitud ocupa menos de 4 bytes."}},
        {"truncated message",
         message(R"({"action":"add"})").left(10),
         {"El mensaje llegó cortado: faltan 10 de sus 16 bytes."}},
        {"not JSON", message(R"({"action": "add", )"), {"El mensaje no es JSON válido."}},
        {"no action",
         message(R"({"url":"S/malo.zip"})"),
         {"Falta la acción (\"action\") del mensaje."}},
        {"file: address", message(R"({"action":"add","url":"file:///etc/passwd"})"), {notOurs}},
        {"line break in address",
         message(R"({"action":"add","url":"S/malo.zip\r\nX-Inyectada: 1"})"),
         {badAddress}},
        {"1000 addresses as a list",
         message(R"({"action":"add","url":[")" + thousand.join(R"(",")") + R"("]})"),
         {"La dirección (\"url\") debe ser un texto con una sola dirección."}},
        {"CR LF in the cookie",
         message(R"({"action":"add","url":"S/malo.zip","cookie":"a=1\r\nX-Inyectada: 1"})"),
         {"Las cookies contienen caracteres no válidos."}},
        {"LF in the referrer",
         message(R"({"action":"add","url":"S/malo.zip","referrer":"S/\nX-Inyectada: 1"})"),
         {"La página de origen (\"referrer\") no es una dirección válida."}},
        {"add",
         message(R"({"action":"add","url":"S/b.zip","referrer":"S/p.html","cookie":"s=1"})"),
         {"ok"},
         true},
        {"grab", message(R"({"action":"grab","url":"S/enlaces.html"})"), {"ok"}, true},
        {"good, bad, good",
         message(R"({"action":"add","url":"S/c.zip"})") +
             message(R"({"action":"add","url":"ftp://127.0.0.1/\nmalo"})") +
             message(R"({"action":"add","url":"S/d.zip"})"),
         {"ok", badAddress, "ok"},
         true},
    };
    for (const auto &row : rows)
        QTest::newRow(row.name) << row.good << row.input << row.expected;
}

void TestNativeHost::answers()
{
    QFETCH(bool, running);
    QFETCH(QByteArray, input);
    QFETCH(QStringList, expected);
    const QString home = running ? m_home.folder() : m_idle.path();

    QCOMPARE(answersTo(home, input, m_x.environment()), expected);

    // Refused messages start nothing.
    QCOMPARE(QFile::exists(m_idle.filePath("corvane.lock")), false);
}

void TestNativeHost::onlyGoodLinksAdded()
{
    // The program took every good link, the last ones after all the refused messages; nothing
    // of those reached its lists or the server.
    for (const char *name : {"a.zip", "b.zip", "c.zip", "d.zip"})
        QTRY_VERIFY_WITH_TIMEOUT(m_home.read("activas.dwn").contains(m_server.url(name).toUtf8()),
                                 10000);
    QTRY_VERIFY_WITH_TIMEOUT(m_server.requests().size() >= 5, 10000);
    QStringList asked;
    for (const QByteArray &request : m_server.requests())
        asked << QString::fromLatin1(request.left(request.indexOf(" HTTP/")));
    asked.removeDuplicates();
    asked.sort();
    QCOMPARE(asked, (QStringList{"GET /a.zip", "GET /b.zip", "GET /c.zip", "GET /d.zip",
                                 "GET /enlaces.html"}));
    QVERIFY(!m_home.read("activas.dwn").contains("malo"));
    QVERIFY(!m_home.read("inactivas.dwn").contains("malo"));
    QVERIFY(!QDir(m_idle.path()).exists("corvane.ini"));
}

void TestNativeHost::cleanupTestCase()
{
    // As on logging out; the program also ends with its X server.
    if (const qint64 program = programOf(m_home.folder()); program > 0) {
        ::kill(pid_t(program), SIGTERM);
        QTRY_VERIFY_WITH_TIMEOUT(!QFile::exists(m_home.path("corvane.lock")), 10000);
    }
}

QTEST_GUILESS_MAIN(TestNativeHost)
#include "tst_nativehost.moc"
