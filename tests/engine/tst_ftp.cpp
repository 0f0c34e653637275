// FTP downloads end to end against the scripted server, for the answers stock servers rarely
// give. How replies cut apart or run together are read is in tst_parsing; the stock servers, with
// resuming, anonymous logins and escaped names, are in tst_realtimers.
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

QTEST_GUILESS_MAIN(TestFtp)
#include "tst_ftp.moc"
