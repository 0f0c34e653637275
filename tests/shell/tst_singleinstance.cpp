#include "commandline.h"
#include "singleinstance.h"

#include <QDir>
#include <QFile>
#include <QLocalSocket>
#include <QSignalSpy>
#include <QSysInfo>
#include <QTemporaryDir>
#include <QTest>
#include <thread>

// The program folder a start chooses, and what keeps a second program off a folder in use; the
// command line and the hand-over themselves are run end to end by tst_headless and tst_program.
class TestSingleInstance : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void folders_data();
    void folders();
    void staleLock();
    void badMessages_data();
    void badMessages();
};

void TestSingleInstance::folders_data()
{
    QTest::addColumn<bool>("installed");
    QTest::addColumn<bool>("writable");
    QTest::addColumn<QString>("home");
    QTest::addColumn<QStringList>("chosen"); // the program folder, then where msg/ is read
    QTest::newRow("build folder") << false << true << "" << QStringList{"exe", "exe"};
    QTest::newRow("build folder, --home") << false << true << "home" << QStringList{"home", "exe"};
    QTest::newRow("folder not writable") << false << false << "" << QStringList{"user", "exe"};
    QTest::newRow("installed") << true << true << "" << QStringList{"user", "share"};
    QTest::newRow("installed, --home") << true << false << "home" << QStringList{"home", "share"};
}

void TestSingleInstance::folders()
{
    QFETCH(bool, installed);
    QFETCH(bool, writable);
    QFETCH(QString, home);
    QFETCH(QStringList, chosen);
    QTemporaryDir root;
    const QString exe = root.filePath("bin");
    QVERIFY(QDir().mkpath(exe));
    if (installed)
        QVERIFY(QDir().mkpath(root.filePath("share/corvane/msg")));
    const QHash<QString, QString> places{{"exe", exe},
                                         {"user", root.filePath("user")},
                                         {"home", root.filePath("home")},
                                         {"share", root.filePath("share/corvane")}};
    const auto all = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
    QFile::setPermissions(exe, writable ? all : QFile::ReadOwner | QFile::ExeOwner);
    CommandLine command;
    command.home = places.value(home);
    const ProgramFolder folder = programFolderFor(command, exe, places["user"]);
    QFile::setPermissions(exe, all);
    // Root writes anywhere: the unwritable case can only be seen by another user.
    if (!writable && !installed && QFileInfo(exe).isWritable())
        QSKIP("running as root");
    QCOMPARE(folder.dir(), places[chosen[0]]);
    QCOMPARE(folder.dataFile("msg"), places[chosen[1]] + "/msg");
}

void TestSingleInstance::staleLock()
{
    // The lock of a program that was killed is taken over.
    QTemporaryDir dir;
    QFile stale(dir.filePath("corvane.lock"));
    QVERIFY(stale.open(QIODevice::WriteOnly));
    stale.write("999999\ncorvane\n" + QSysInfo::machineHostName().toUtf8() + "\n");
    stale.close();
    InstanceLock lock{ProgramFolder(dir.path())};
    QVERIFY(lock.tryLock());
}

void TestSingleInstance::badMessages_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::newRow("garbage") << QByteArray("\x01\x02garbage\n\n");
    QTest::newRow("no end") << QByteArray("CORVANE 1\nhttp://h/a\n");
    QTest::newRow("huge") << "CORVANE 1\n" + QByteArray(3 * 1024 * 1024, 'x') + "\n\n";
}

void TestSingleInstance::badMessages()
{
    QFETCH(QByteArray, message);
    QTemporaryDir dir;
    const ProgramFolder folder(dir.path());
    InstanceChannel channel(folder);
    QVERIFY(channel.listen());
    QSignalSpy received(&channel, &InstanceChannel::received);
    QLocalSocket socket;
    socket.connectToServer(InstanceChannel::nameFor(folder));
    QVERIFY(socket.waitForConnected(2000));
    socket.write(message);
    socket.flush();
    // A good message sent after the bad one is the only one taken.
    bool taken = false;
    std::thread later([&] { taken = InstanceChannel::handOver(folder, {"http://h/ok"}); });
    QTRY_COMPARE(received.size(), 1);
    later.join();
    QVERIFY(taken);
    QCOMPARE(received.first().first().toStringList(), QStringList{"http://h/ok"});
    QVERIFY(InstanceChannel::addressesOf(message).isEmpty());
}

QTEST_GUILESS_MAIN(TestSingleInstance)
#include "tst_singleinstance.moc"
