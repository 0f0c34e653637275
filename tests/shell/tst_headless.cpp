#include "corvaneprocess.h"
#include "scriptedhttpserver.h"
#include "settingsfixture.h"

#include <QTest>

namespace {

const QByteArray Content = QByteArray("0123456789abcdef").repeated(20000);

} // namespace

class TestHeadless : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void queueAndFailures()
    {
        SettingsFixture f;
        // Two at a time: the rest wait in the queue and follow as places free, a failure's too.
        QVERIFY(f.model.setSpin(&Settings::maxdescval, 3));
        QVERIFY(f.model.save());
        ScriptedHttpServer server([](const QByteArray &request, int) {
            return request.contains("nada.zip") ? HttpReply::of("HTTP/1.1 404 No\r\n\r\n")
                                                : ScriptedHttpServer::file(Content, request, true);
        });
        // Only "zelq:" in small letters marks a link: the other is an address and is refused.
        QStringList urls{server.url("nada.zip"), "ZELQ:" + server.url("z.bin")};
        for (int i = 0; i < 6; ++i)
            urls << server.url(QStringLiteral("a/f%1.bin").arg(i));

        // Run headless over its program folder, as a person would from a script.
        CorvaneProcess run(QStringList{"--headless", "--home=" + f.folder()} + urls);
        QCOMPARE(run.waitForExit(30000), 1);

        for (int i = 0; i < 6; ++i)
            QCOMPARE(f.read(QStringLiteral("download/f%1.bin").arg(i)), Content);
        QCOMPARE(server.requests().size(), 7);
        const QString err = QString::fromUtf8(run.readAllStandardError());
        QVERIFY2(err.contains("El archivo " + server.url("nada.zip") + " no existe.\n"),
                 qPrintable(err));
        QVERIFY(err.contains("Finalizada la descarga de " + server.url("a/f5.bin") + "\n"));
        const QString out = QString::fromUtf8(run.readAllStandardOutput());
        QVERIFY2(out.contains("Iniciada: " + server.url("a/f0.bin")), qPrintable(out));
        QVERIFY(out.contains("Fallida: " + server.url("nada.zip")));
        // Both lists are written on the way out; only the failed download is left in them.
        const QByteArray active = f.read("activas.dwn");
        QVERIFY(active.startsWith((server.url("nada.zip") + "\r\n").toUtf8()));
        QCOMPARE(active.count("http://"), 1);
        QVERIFY(QFile::exists(f.path("inactivas.dwn")));
    }

    void stopsOnTerm()
    {
        SettingsFixture f; // no settings file: a first start, with the built-in values
        ScriptedHttpServer server([](const QByteArray &request, int) {
            HttpReply reply = ScriptedHttpServer::file(Content, request, true);
            reply.dropAfter = reply.bytes.indexOf("\r\n\r\n") + 4 + 100000;
            reply.stall = true;
            return reply;
        });
        const QString path = f.path("download/f.bin");
        CorvaneProcess first({"--headless", "--home=" + f.folder(), server.url("f.bin")});
        QTRY_COMPARE_WITH_TIMEOUT(QFileInfo(path).size(), qint64(100000), 20000);
        first.terminate(); // SIGTERM
        QCOMPARE(first.waitForExit(10000), 1);
        QVERIFY(!first.readAllStandardError().contains("configuración"));
        QVERIFY(
            f.read("corvane.ini").startsWith(QByteArray(f.path("download/").toUtf8() + "\r\n")));
        QCOMPARE(f.read("download/f.bin"), Content.left(100000));
        QVERIFY(f.read("activas.dwn").startsWith(server.url("f.bin").toUtf8()));
        QVERIFY(f.read("historial.rtf").contains("Cerrado a las"));
    }

    // A usage error ends with status 2 and the reason before the usage.
    void usage()
    {
        CorvaneProcess process({"--headless", "--rápido"}, QProcessEnvironment::systemEnvironment(),
                               QProcess::MergedChannels);
        QCOMPARE(process.waitForExit(30000), 2);
        QVERIFY(QString::fromUtf8(process.readAll())
                    .startsWith("Opción desconocida: --rápido\n\nUso: corvane"));
    }
};

QTEST_GUILESS_MAIN(TestHeadless)
#include "tst_headless.moc"
