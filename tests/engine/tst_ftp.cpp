// FTP downloads end to end against the scripted server: the commands sent, byte for byte, and
// the file written. How replies cut apart or run together are read is in tst_parsing; the stock
// servers are in tst_realtimers.
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
    void missingFile_data();
    void missingFile();
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
    // A download reloaded from a list that kept no credentials.
    row("resume with no user name: anonymous", "pub/x.zip", "", 5000, false,
        "USER anonymous, PASS freepwd, TYPE I, CWD /pub, REST 0, SIZE x.zip, REST 5000, PASV, "
        "RETR x.zip");
    row("REST refused: whole file over the old one", "pub/x.zip", "anonymous", 5000, true,
        "USER anonymous, PASS freepwd, TYPE I, CWD /pub, REST 0, SIZE x.zip, PASV, RETR x.zip");
    // Names go decoded on the wire; a file at the root is in "/".
    row("file at the root, escaped name", "canci%C3%B3n%20x.bin", "anonymous", 0, false,
        "USER anonymous, PASS freepwd, TYPE I, CWD /, REST 0, SIZE canción x.bin, REST 0, PASV, "
        "RETR canción x.bin");
}

void TestFtp::commandSequence()
{
    QFETCH(QString, path);
    QFETCH(QString, user);
    QFETCH(int, onDisk);
    QFETCH(bool, refuseRest);
    EngineFixture f;
    ScriptedFtpServer server(Content);
    server.answer = [&](const QByteArray &line) -> std::optional<QByteArray> {
        if (refuseRest && line.startsWith("REST"))
            return "502 No implementado\r\n";
        return std::nullopt;
    };
    // What is on disk already: the true start of the file, or other bytes the server overwrites.
    f.write("x.zip", refuseRest ? QByteArray(onDisk, 'x') : Content.left(onDisk));
    f.add(server.url(path), "x.zip", user, user.isEmpty() ? "" : "freepwd");
    QTRY_COMPARE(f.status(1), DownloadStatus::Finished);
    QTEST(server.commandWords(), "commands");
    QCOMPARE(f.read("x.zip"), Content);
    QCOMPARE(f.active.slot(1).total, Content.size());
    QCOMPARE(f.active.slot(1).allowredo, !refuseRest);
}

void TestFtp::missingFile_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("reply");
    QTest::newRow("folder") << QByteArray("CWD") << QByteArray("550 No existe\r\n");
    QTest::newRow("retrieve") << QByteArray("RETR") << QByteArray("553 No permitido\r\n");
}

// A file the server does not have fails at once, like a 404: no retry, no empty file.
void TestFtp::missingFile()
{
    QFETCH(QByteArray, command);
    QFETCH(QByteArray, reply);
    EngineFixture f;
    ScriptedFtpServer server(Content);
    server.answer = [&](const QByteArray &line) -> std::optional<QByteArray> {
        if (line.startsWith(command))
            return reply;
        return std::nullopt;
    };
    const QString url = server.url("pub/nada.iso");
    f.add(url, "nada.iso", "anonymous", "freepwd");
    QTRY_COMPARE(f.status(1), DownloadStatus::Exhausted);
    QVERIFY(!f.transfer(1).redoActive());
    QCOMPARE(f.desktop.callsOf("showMessageWindow"),
             QStringList{"El archivo " + url + " no existe.|"});
    QVERIFY(!QFile::exists(f.path("nada.iso")));
}

void TestFtp::loginRefused()
{
    // Both servers take only the password "buena".
    const auto onlyBuena = [](const QByteArray &line) -> std::optional<QByteArray> {
        if (line.startsWith("PASS") && line != "PASS buena")
            return "530 Usuario incorrecto\r\n";
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
