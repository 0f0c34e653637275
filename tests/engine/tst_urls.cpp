#include "failure.h"
#include "fakedesktop.h"
#include "urls.h"

#include <QTest>

class TestUrls : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void parts_data();
    void parts();
    void badScheme_data();
    void badScheme();
    void resolveDots_data();
    void resolveDots();
    void failures_data();
    void failures();
    void replaceAndExtension();
};

void TestUrls::parts_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("host");
    QTest::addColumn<int>("port");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("name");

    QTest::newRow("port and folders") << "http://host:8080/dir/f.zip"
                                      << "host" << 8080 << "dir/f.zip"
                                      << "f.zip";
    QTest::newRow("root slash") << "http://host/"
                                << "host" << 80 << ""
                                << "index.html";
    QTest::newRow("no slash after host") << "http://host"
                                         << "host" << 80 << ""
                                         << "host";
    QTest::newRow("ftp with blank") << "ftp://host/pub/my%20file.txt"
                                    << "host" << 21 << "pub/my%20file.txt"
                                    << "my file.txt";
    QTest::newRow("only %20 decoded") << "http://h/a%2Fb%41.zip"
                                      << "h" << 80 << "a%2Fb%41.zip"
                                      << "a%2Fb%41.zip";
    QTest::newRow("folder ends in slash") << "http://h/dir/"
                                          << "h" << 80 << "dir/"
                                          << "index.html";
    QTest::newRow("colon in path cuts host") << "http://h/a:b/c.zip"
                                             << "h/a" << 0 << "a:b/c.zip"
                                             << "c.zip";
    QTest::newRow("https") << "https://host/d/f.zip"
                           << "host" << 443 << "d/f.zip"
                           << "f.zip";
    QTest::newRow("https with port") << "https://host:8443/f.zip"
                                     << "host" << 8443 << "f.zip"
                                     << "f.zip";
    QTest::newRow("high port") << "ftp://127.0.0.1:50021/x"
                               << "127.0.0.1" << 50021 << "x"
                               << "x";
}

void TestUrls::parts()
{
    QFETCH(QString, url);
    FakeDesktop desktop;
    QTEST(HostOf(url, desktop), "host");
    QTEST(int(PortOf(url)), "port");
    QTEST(PathOf(url), "path");
    QTEST(FileNameOf(url), "name");
    QVERIFY(desktop.calls.isEmpty());
}

void TestUrls::badScheme_data()
{
    QTest::addColumn<QString>("url");
    QTest::newRow("capital scheme") << "HTTP://host/f.zip";
    QTest::newRow("capital secure scheme") << "HTTPS://host/f.zip";
    QTest::newRow("empty") << "";
}

void TestUrls::badScheme()
{
    QFETCH(QString, url);
    FakeDesktop desktop;
    QCOMPARE(HostOf(url, desktop), HostError);
    QCOMPARE(desktop.calls, QStringList{"messageBox|Critical|Dirección incorrecta."});
}

void TestUrls::resolveDots_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("resolved");
    QTest::newRow("one up") << "http://h/a/b/../c.zip"
                            << "http://h/a/c.zip";
    QTest::newRow("https") << "https://h/a/../b"
                           << "https://h/b";
    QTest::newRow("two up") << "ftp://h/a/b/../../c"
                            << "ftp://h/c";
    QTest::newRow("dot kept") << "http://h/./a"
                              << "http://h/./a";
    QTest::newRow("no scheme") << "h/a/../b"
                               << "h/b";
    QTest::newRow("trailing slash") << "http://h/a/"
                                    << "http://h/a/";
    QTest::newRow("empty") << ""
                           << "";
}

void TestUrls::resolveDots()
{
    QFETCH(QString, url);
    QTEST(ResolveDots(url), "resolved");
}

void TestUrls::failures_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<bool>("port"); // true: PortOf fails, false: ResolveDots fails
    QTest::newRow("port without slash") << "http://host:8080" << true;
    QTest::newRow("port out of range") << "http://host:70000/" << true;
    QTest::newRow("dots above the host") << "http://h/../x" << false;
    QTest::newRow("dots first") << "../x" << false;
    QTest::newRow("257 segments") << "http://h" + QString("/a").repeated(256) << false;
}

void TestUrls::failures()
{
    QFETCH(QString, url);
    QFETCH(bool, port);
    if (port)
        QVERIFY_THROWS_EXCEPTION(Failure, PortOf(url));
    else
        QVERIFY_THROWS_EXCEPTION(Failure, ResolveDots(url));
}

void TestUrls::replaceAndExtension()
{
    QString text = QStringLiteral("a%20b%20c");
    Reemplazar(text, QStringLiteral("%20"), QStringLiteral(" "));
    QCOMPARE(text, QStringLiteral("a b c"));
    Reemplazar(text, QStringLiteral("zz"), QStringLiteral("y"));
    QCOMPARE(text, QStringLiteral("a b c"));
    QCOMPARE(ExtensionOf(QStringLiteral("a.tar.gz")), QStringLiteral("gz"));
    QCOMPARE(ExtensionOf(QStringLiteral("README")), QString());
}

QTEST_GUILESS_MAIN(TestUrls)
#include "tst_urls.moc"
