// FTP downloads end to end against the scripted server: the commands sent, byte for byte, and
// the file written. The stock server (pyftpdlib) is in tst_realtimers.
#include "enginefixture.h"
#include "scriptedftpserver.h"

#include <QTest>

namespace {

const QByteArray Content = randomBytes(150000);

} // namespace

class TestFtp : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void commandSequence_data();
    void commandSequence();
    void greetingChunks_data();
    void greetingChunks();
    void splitReplyLost();
    void loginRefused();
};

void TestFtp::commandSequence_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("user");
    QTest::addColumn<int>("onDisk");
    QTest::addColumn<bool>("refuseRest");
    QTest::addColumn<QByteArray>("commands");
    const auto row = [](const char *tag, const char *path, const char *user, int onDisk,
                        bool refuseRest, const char *commands) {
        QTest::newRow(tag) << QString(path) << QString(user) << onDisk << refuseRest
                           << QByteArray(commands);
    };
    row("fresh, nested folder", "pub/tools/x.zip", "anonymous", 0, false,
        "USER anonymous, PASS freepwd, TYPE I, CWD /pub/tools, REST 0, SIZE x.zip, REST 0, PASV, "
        "RETR x.zip");
    // A download reloaded from a list that kept no credentials.
    row("resume with no user name: anonymous", "pub/x.zip", "", 5000, false,
        "USER anonymous, PASS freepwd, TYPE I, CWD /pub, REST 0, SIZE x.zip, REST 5000, PASV, "
        "RETR x.zip");
    row("REST refused: whole file over the old one", "pub/x.zip", "anonymous", 5000, true,
        "USER anonymous, PASS freepwd, TYPE I, CWD /pub, REST 0, SIZE x.zip, PASV, RETR x.zip");
    row("file at the root, blank in the name", "my%20file.bin", "anonymous", 0, false,
        "USER anonymous, PASS freepwd, TYPE I, CWD, REST 0, SIZE my file.bin, REST 0, PASV, "
        "RETR my file.bin");
}

void TestFtp::commandSequence()
{
    QFETCH(QString, path);
    QFETCH(QString, user);
    QFETCH(int, onDisk);
    QFETCH(bool, refuseRest);
    EngineFixture f;
    ScriptedFtpServer server(Content);
    server.answer = [&](const QByteArray &line) -> std::optional<QList<QByteArray>> {
        if (refuseRest && line.startsWith("REST"))
            return QList<QByteArray>{"502 No implementado\r\n"};
        return std::nullopt;
    };
    // What is on disk already: the true start of the file, or other bytes the server overwrites.
    f.write("x.zip", refuseRest ? QByteArray(onDisk, 'x') : Content.left(onDisk));
    f.add(server.url(path), "x.zip", user, user.isEmpty() ? "" : "freepwd");
    QTRY_COMPARE(f.status(1), DownloadStatus::Finished);
    QTEST(server.commandWords(), "commands");
    if (!path.contains('/'))
        QCOMPARE(server.commands().value(3), QByteArray("CWD \r\n"));
    QCOMPARE(f.read("x.zip"), Content);
    QCOMPARE(f.active.slot(1).total, Content.size());
    QCOMPARE(f.active.slot(1).allowredo, !refuseRest);
}

void TestFtp::greetingChunks_data()
{
    QTest::addColumn<QList<QByteArray>>("greeting");
    QTest::addColumn<int>("users");
    QTest::newRow("multi-line greeting in one chunk")
        << QList<QByteArray>{"220-Bienvenido\r\n220-Servidor de pruebas\r\n220 \r\n"} << 1;
    // Each piece's last line is a 220 of its own: the login starts again (and the dialogue that
    // follows runs twice; only the greeting is looked at here).
    QTest::newRow("the same in two chunks")
        << QList<QByteArray>{"220-Bienvenido\r\n220-Servidor de pruebas\r\n", "220 \r\n"} << 2;
}

void TestFtp::greetingChunks()
{
    QFETCH(QList<QByteArray>, greeting);
    EngineFixture f;
    ScriptedFtpServer server(Content);
    server.greeting = greeting;
    f.add(server.url("x"), "x", "anonymous", "freepwd");
    QTRY_VERIFY(server.commandWords().contains("SIZE x"));
    QTest::qWait(100);
    QTEST(int(server.commandWords().count("USER anonymous")), "users");
}

void TestFtp::splitReplyLost()
{
    EngineFixture f;
    ScriptedFtpServer server(Content);
    server.answer = [](const QByteArray &line) -> std::optional<QList<QByteArray>> {
        if (line.startsWith("SIZE"))
            return QList<QByteArray>{"213 15", "0000\r\n"};
        return std::nullopt;
    };
    f.add(server.url("x"), "x", "anonymous", "freepwd");
    QTRY_VERIFY(server.commandWords().contains("SIZE x"));
    QTest::qWait(300);
    // Neither half is a size reply: the dialogue waits for the silence timer.
    QVERIFY(!server.commandWords().contains("PASV"));
    QCOMPARE(f.active.slot(1).total, 0);
    QCOMPARE(f.active.slot(1).ftpestado, QStringLiteral("GETSIZE"));
}

void TestFtp::loginRefused()
{
    // Both servers take only the password "buena".
    const auto onlyBuena = [](const QByteArray &line) -> std::optional<QList<QByteArray>> {
        if (line.startsWith("PASS") && line != "PASS buena\r\n")
            return QList<QByteArray>{"530 Usuario incorrecto\r\n"};
        return std::nullopt;
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

QTEST_GUILESS_MAIN(TestFtp)
#include "tst_ftp.moc"
