#include "corvaneprocess.h"
#include "scriptedhttpserver.h"
#include "settingsfixture.h"
#include "singleinstance.h"
#include "xserver.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QLocalSocket>
#include <QTest>

namespace {

const QString Source = qEnvironmentVariable("CORVANE_SOURCE_DIR");

QJsonObject jsonOf(const QString &path)
{
    return QJsonDocument::fromJson(readFile(path)).object();
}

} // namespace

// Debian's Chromium, headless on a private profile, with the extension loaded from the source
// folder; its hand-off to the program runs once per test process.
class TestBrowserExtension : public QObject
{
    Q_OBJECT

    XServer m_x;
    SettingsFixture m_home;
    QTemporaryDir m_person; // the person's own folders, where the browsers look
    CorvaneProcess m_corvane;
    QJsonArray m_answers;
    ScriptedHttpServer m_server{[](const QByteArray &request, int) {
        if (request.startsWith("GET /pagina.html "))
            return ScriptedHttpServer::status(
                "HTTP/1.1 200 OK",
                "Content-Type: text/html\r\nSet-Cookie: sesion=abc123; Path=/\r\n"
                "Connection: close\r\n",
                "<a href=\"archivo.zip\">archivo</a> <a id=captura href=captura.zip "
                "download>c</a>");
        if (!request.startsWith("GET /archivo.zip ") && !request.startsWith("GET /captura.zip "))
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
        // setup: the program running on its folder; the host registered in the person's folders
        QVERIFY2(m_x.start(), qPrintable(m_x.error()));
        QVERIFY(m_home.saveQuiet());
        QProcessEnvironment env = m_x.environment();
        env.insert("HOME", m_person.path());
        env.insert("XDG_CONFIG_HOME", m_person.filePath("config"));
        env.insert("XDG_DATA_HOME", m_person.filePath("data"));
        m_corvane.launch({"--home", m_home.folder()}, env, QProcess::ForwardedErrorChannel);
        QTRY_VERIFY_WITH_TIMEOUT(
            [this] {
                QLocalSocket channel;
                channel.connectToServer(InstanceChannel::nameFor(ProgramFolder(m_home.folder())));
                return channel.waitForConnected(100);
            }(),
            20000);
        CorvaneProcess registration({"--home", m_home.folder(), "--register-browsers"}, env);
        QCOMPARE(registration.waitForExit(10000), 0);

        // Firefox's manifest names the script Chromium's does; Chromium itself checks that the one
        // it reads allows the extension, whose id follows from the key in its manifest.
        QCOMPARE(jsonOf(m_person.filePath(".mozilla/native-messaging-hosts/corvane.json"))["path"],
                 m_person.filePath("data/corvane/corvane-native-host"));

        // action: what the two context-menu entries do, on the page's link and on the page
        QProcess driver;
        driver.setProcessEnvironment(env);
        driver.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        driver.start("/usr/bin/python3", {Source + "/tests/shell/drivebrowser.py",
                                          "/usr/bin/chromium", m_person.filePath("config/chromium"),
                                          Source + "/extension", m_server.url("pagina.html"),
                                          m_server.url("archivo.zip"), m_home.path("activas.dwn")});
        QTRY_VERIFY_WITH_TIMEOUT(driver.state() == QProcess::NotRunning, 120000);
        QCOMPARE(driver.exitCode(), 0);
        m_answers = QJsonDocument::fromJson(driver.readAllStandardOutput()).array();
    }

    // The program took both; the file's address is in its list and asked for as the browser would:
    // from the page, with the cookie the page set. The link grabber read the page, and the
    // download the browser started was captured.
    void handsOver()
    {
        QCOMPARE(m_answers, (QJsonArray{QJsonObject{{"ok", true}}, QJsonObject{{"ok", true}}}));
        const QByteArray file = m_server.url("archivo.zip").toUtf8();
        QTRY_VERIFY_WITH_TIMEOUT(m_home.read("activas.dwn").startsWith(QByteArray(file + "\r\n")),
                                 10000);
        QTRY_VERIFY_WITH_TIMEOUT(!requestFor("/archivo.zip").isEmpty(), 10000);
        const QByteArray request = requestFor("/archivo.zip");
        QVERIFY2(request.contains(
                     QByteArray("\r\nReferer: " + m_server.url("pagina.html").toUtf8() + "\r\n")),
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
    }

private:
    QByteArray requestFor(const QByteArray &path) const
    {
        for (const QByteArray &request : m_server.requests()) {
            // The browser's own requests name it as Mozilla does.
            if (request.startsWith(QByteArray("GET " + path + " ")) &&
                !request.contains("Mozilla/"))
                return request;
        }
        return {};
    }
};

QTEST_GUILESS_MAIN(TestBrowserExtension)
#include "tst_browserext.moc"
