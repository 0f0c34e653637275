#include "fakedesktop.h"
#include "historylog.h"
#include "historyview.h"
#include "historywindow.h"
#include "scriptedhttpserver.h"
#include "settings.h"

#include <QDir>
#include <QPlainTextEdit>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <csignal>

namespace {

const QByteArray Content = QByteArray("0123456789abcdef").repeated(20000);

// `pattern` with TIME and DATE standing for the clock's texts, every other character literal.
QRegularExpression linesLike(const QString &pattern)
{
    QString escaped = QRegularExpression::escape(pattern);
    escaped.replace("TIME", "\\d\\d:\\d\\d:\\d\\d").replace("DATE", "\\d\\d/\\d\\d/\\d{4}");
    escaped.replace("SECONDS", "\\d+");
    return QRegularExpression(QRegularExpression::anchoredPattern(escaped));
}

} // namespace

class TestHistoryHeadless : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void windowShowsTheHeadlessRun_data();
    void windowShowsTheHeadlessRun();
};

void TestHistoryHeadless::windowShowsTheHeadlessRun_data()
{
    QTest::addColumn<bool>("interrupt");
    QTest::addColumn<QString>("shown");
    const QString start = "255:Iniciado a las TIME el DATE\r\n | 0:Descargando URL a PATH\r\n | ";
    const QString next = "255:Cerrado a las TIME el DATE\r\nIniciado a las TIME el DATE";
    QTest::newRow("finished") << false
                              << start +
                                     "12582912:La descarga de URL a PATH ha finalizado tras "
                                     "SECONDS segundos.\r\n | " +
                                     next;
    QTest::newRow("stopped by SIGTERM") << true << start + next;
}

void TestHistoryHeadless::windowShowsTheHeadlessRun()
{
    QFETCH(bool, interrupt);
    QFETCH(QString, shown);
    QTemporaryDir home;
    ScriptedHttpServer server([&](const QByteArray &request, int) {
        HttpReply reply = ScriptedHttpServer::file(Content, request, true);
        if (interrupt) {
            reply.dropAfter = reply.bytes.indexOf("\r\n\r\n") + 4 + 100000;
            reply.stall = true;
        }
        return reply;
    });
    const QString path = QDir(home.path()).filePath("download/f.bin");
    QProcess run;
    run.start(qEnvironmentVariable("CORVANE_BIN_DIR") + "/corvane",
              {"--headless", "--home", home.path(), server.url("f.bin")});
    QVERIFY(run.waitForStarted());
    if (interrupt) {
        QTRY_COMPARE_WITH_TIMEOUT(QFileInfo(path).size(), qint64(100000), 20000);
        ::kill(pid_t(run.processId()), SIGTERM);
    }
    QTRY_VERIFY_WITH_TIMEOUT(run.state() == QProcess::NotRunning, 20000);
    QCOMPARE(run.exitCode(), interrupt ? 1 : 0);

    // The next start of the program with windows shows what the headless run logged.
    Settings settings;
    settings.histrut = QDir(home.path()).filePath("historial.rtf");
    FakeDesktop desktop;
    HistoryLog log(settings, desktop);
    log.open();
    HistoryWindow window(log);
    const QString described = describe(*window.findChild<QPlainTextEdit *>("texto")->document());
    shown.replace("URL", server.url("f.bin")).replace("PATH", path);
    QVERIFY2(linesLike(shown).match(described).hasMatch(), qPrintable(described));
    QVERIFY(desktop.calls.isEmpty());
}

QTEST_MAIN(TestHistoryHeadless)
#include "tst_historyheadless.moc"
