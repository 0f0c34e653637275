#include "corvaneprocess.h"
#include "nativehost.h"
#include "scriptedhttpserver.h"
#include "settingsfixture.h"
#include "singleinstance.h"
#include "xserver.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QLocalSocket>
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

// The answer as "ok" (and the endings it lists) or its error.
QString shown(const QJsonObject &answer)
{
    QStringList ok{"ok"};
    for (const QJsonValue &ending : answer["extensions"].toArray())
        ok << ending.toString();
    return answer["ok"].toBool() ? ok.join(' ') : answer["error"].toString();
}

// The host as the browser starts it (with the extension's origin after the option), fed
// `input`; each answer as shown().
QStringList answersTo(const QString &home, const QByteArray &input, const QProcessEnvironment &env)
{
    CorvaneProcess host({"--home", home, "--native-host", "chrome-extension://x/"}, env);
    host.write(input);
    host.closeWriteChannel();
    host.waitForExit(60000);
    QStringList answers;
    for (QByteArray out = host.readAllStandardOutput(); out.size() >= 4;) {
        const quint32 length = qFromUnaligned<quint32>(out.constData());
        answers << shown(QJsonDocument::fromJson(out.mid(4, length)).object());
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

const QString Source = qEnvironmentVariable("CORVANE_SOURCE_DIR");

QJsonObject jsonOf(const QString &path)
{
    return QJsonDocument::fromJson(readFile(path)).object();
}

} // namespace

// The host fed framed messages, with and without the program running; then the extension in a
// browser, end to end.
class TestNativeHost : public QObject
{
    Q_OBJECT

    XServer m_x;
    SettingsFixture m_home;
    QTemporaryDir m_idle;       // no program ever runs here
    SettingsFixture m_browsing; // where the program the browser hands its links to runs
    QTemporaryDir m_person;     // the person's own folders, where the browsers look
    CorvaneProcess m_corvane;
    QJsonArray m_answers;
    ScriptedHttpServer m_site{[](const QByteArray &request, int) {
        if (request.startsWith("GET /pagina.html "))
            return ScriptedHttpServer::status(
                "HTTP/1.1 200 OK",
                "Content-Type: text/html\r\nSet-Cookie: sesion=abc123; Path=/\r\n"
                "Connection: close\r\n",
                "<a href=\"archivo.zip\">archivo</a> <a id=captura href=captura.zip "
                "download>c</a>");
        if (!request.startsWith("GET /archivo.zip ") && !request.startsWith("GET /captura.zip ") &&
            !request.startsWith("GET /a.zip "))
            return ScriptedHttpServer::status("HTTP/1.1 404 No\r\nConnection: close");
        // Some of the file, then silence: the download stays in the list. The browser needs a few
        // kilobytes to see a file it downloads rather than shows.
        HttpReply reply = ScriptedHttpServer::file(QByteArray(100000, 'z'), request, false);
        reply.dropAfter = 5000;
        reply.stall = true;
        return reply;
    }};

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(m_x.start(), qPrintable(m_x.error()));
        QVERIFY(m_home.saveQuiet());
        for (const QString &home : {m_home.folder(), m_idle.path()})
            QVERIFY(writeFile(home + "/listado.lst", "exe\r\n\r\n.pdf\r\n"));

        // Debian's Chromium, headless on a private profile, with the extension loaded from the
        // source folder: the program running on its folder, the host registered in the person's
        // folders.
        QVERIFY(m_browsing.saveQuiet());
        QProcessEnvironment env = m_x.environment();
        env.insert("HOME", m_person.path());
        env.insert("XDG_CONFIG_HOME", m_person.filePath("config"));
        env.insert("XDG_DATA_HOME", m_person.filePath("data"));
        m_corvane.launch({"--home", m_browsing.folder()}, env, QProcess::ForwardedErrorChannel);
        QTRY_VERIFY_WITH_TIMEOUT(
            [this] {
                QLocalSocket channel;
                channel.connectToServer(
                    InstanceChannel::nameFor(ProgramFolder(m_browsing.folder())));
                return channel.waitForConnected(100);
            }(),
            20000);
        CorvaneProcess registration({"--home", m_browsing.folder(), "--register-browsers"}, env);
        QCOMPARE(registration.waitForExit(10000), 0);

        // Firefox's manifest names the script Chromium's does; Chromium itself checks that the one
        // it reads allows the extension, whose id follows from the key in its manifest.
        QCOMPARE(jsonOf(m_person.filePath(".mozilla/native-messaging-hosts/corvane.json"))["path"],
                 m_person.filePath("data/corvane/corvane-native-host"));

        // What the two context-menu entries do, on the page's link and on the page.
        QProcess driver;
        driver.setProcessEnvironment(env);
        driver.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        driver.start("/usr/bin/python3",
                     {Source + "/tests/shell/drivebrowser.py", "/usr/bin/chromium",
                      m_person.filePath("config/chromium"), Source + "/extension",
                      m_site.url("pagina.html"), m_site.url("archivo.zip"),
                      m_browsing.path("activas.dwn")});
        QTRY_VERIFY_WITH_TIMEOUT(driver.state() == QProcess::NotRunning, 120000);
        QCOMPARE(driver.exitCode(), 0);
        m_answers = QJsonDocument::fromJson(driver.readAllStandardOutput()).array();
    }

    // A message too long is answered and skipped, the next read on; one cut short ends the run.
    // Nothing starts a program.
    void framing()
    {
        const QByteArray input = framed(QByteArray(NativeHost::MaxMessage + 1, ' ')) +
                                 framed(R"({"action":"extensions"})") +
                                 framed(R"({"action":"add"})").left(10);
        QCOMPARE(
            answersTo(m_idle.path(), input, m_x.environment()),
            (QStringList{"El mensaje ocupa más de 1 MB.", "ok exe zip ace tar iso bmp gif jpg .pdf",
                         "El mensaje llegó cortado: faltan 10 de sus 16 bytes."}));
        QVERIFY(!QFile::exists(m_idle.filePath("corvane.lock")));
    }

    void refused_data()
    {
        QTest::addColumn<QByteArray>("message");
        QTest::addColumn<QString>("error");
        const auto row = [](const char *name, const char *message, const QString &error) {
            QTest::newRow(name) << QByteArray(message) << error;
        };
        row("not JSON", R"({"action": "add", )", "El mensaje no es JSON válido.");
        row("no action", R"({"url":"http://h/a.zip"})",
            "Falta la acción (\"action\") del mensaje.");
        row("file: address", R"({"action":"add","url":"file:///etc/passwd"})",
            "Corvane solo descarga direcciones http://, https:// o ftp://.");
        row("line break in address", R"({"action":"add","url":"http://h/a.zip\r\nX-Inyectada: 1"})",
            "La dirección contiene caracteres no válidos.");
        row("addresses as a list", R"({"action":"add","url":["http://h/a.zip","http://h/b.zip"]})",
            "La dirección (\"url\") debe ser un texto con una sola dirección.");
        row("CR LF in the cookie",
            R"({"action":"add","url":"http://h/a.zip","cookie":"a=1\r\nX: 1"})",
            "Las cookies contienen caracteres no válidos.");
        row("LF in the referrer",
            R"({"action":"add","url":"http://h/a.zip","referrer":"http://h/\nX: 1"})",
            "La página de origen (\"referrer\") no es una dirección válida.");
    }

    void refused()
    {
        QFETCH(QByteArray, message);
        NativeHost host(ProgramFolder(m_idle.path()), CorvaneProcess::built());
        QTEST(shown(host.answer(message)), "error");
        QVERIFY(!QFile::exists(m_idle.filePath("corvane.lock")));
    }

    void startsTheProgram()
    {
        // No program runs: the host starts one and hands it the link.
        const QString add =
            R"({"action":"add","url":"%1a.zip","referrer":"%1p.html","cookie":"s=1"})";
        QCOMPARE(
            answersTo(m_home.folder(), framed(add.arg(m_site.url("")).toUtf8()), m_x.environment()),
            QStringList{"ok"});
        QVERIFY(programOf(m_home.folder()) > 0);
        QTRY_VERIFY_WITH_TIMEOUT(m_home.read("activas.dwn").contains(m_site.url("a.zip").toUtf8()),
                                 20000);
    }

    // The program took both; the file's address is in its list and asked for as the browser would:
    // from the page, with the cookie the page set. The link grabber read the page, and the
    // download the browser started was captured.
    void handsOver()
    {
        QCOMPARE(m_answers, (QJsonArray{QJsonObject{{"ok", true}}, QJsonObject{{"ok", true}}}));
        const QByteArray file = m_site.url("archivo.zip").toUtf8();
        QTRY_VERIFY_WITH_TIMEOUT(
            m_browsing.read("activas.dwn").startsWith(QByteArray(file + "\r\n")), 10000);
        QTRY_VERIFY_WITH_TIMEOUT(!requestFor("/archivo.zip").isEmpty(), 10000);
        const QByteArray request = requestFor("/archivo.zip");
        QVERIFY2(request.contains(
                     QByteArray("\r\nReferer: " + m_site.url("pagina.html").toUtf8() + "\r\n")),
                 request.constData());
        QVERIFY2(request.contains("\r\nCookie: sesion=abc123\r\n"), request.constData());
        QTRY_VERIFY_WITH_TIMEOUT(!requestFor("/pagina.html").isEmpty(), 10000);
        QTRY_VERIFY_WITH_TIMEOUT(!requestFor("/captura.zip").isEmpty(), 10000);
    }

    void cleanupTestCase()
    {
        m_corvane.terminate();
        if (!m_corvane.waitForFinished(10000))
            m_corvane.kill();
        // As on logging out; the program also ends with its X server.
        if (const qint64 program = programOf(m_home.folder()); program > 0) {
            ::kill(pid_t(program), SIGTERM);
            QTRY_VERIFY_WITH_TIMEOUT(!QFile::exists(m_home.path("corvane.lock")), 10000);
        }
    }

private:
    QByteArray requestFor(const QByteArray &path) const
    {
        for (const QByteArray &request : m_site.requests()) {
            // The browser's own requests name it as Mozilla does.
            if (request.startsWith(QByteArray("GET " + path + " ")) &&
                !request.contains("Mozilla/"))
                return request;
        }
        return {};
    }
};

QTEST_GUILESS_MAIN(TestNativeHost)
#include "tst_nativehost.moc"
