#include "linkextraction.h"

#include <QTest>

class TestLinkExtraction : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void Add_Link_data();
    void Add_Link();
    void GetMainWeb_data();
    void GetMainWeb();
    void SearchExtension_data();
    void SearchExtension();
};

void TestLinkExtraction::Add_Link_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QStringList>("addresses");
    QTest::addColumn<bool>("fails");

    // Every page is taken from http://h/dir/p.htm: the base is http://h/dir/.
    const QString link = QStringLiteral("a href=");
    QTest::newRow("double quotes")
        << "<a href=\"f.zip\">" << link << QStringList{"http://h/dir/f.zip"} << false;
    QTest::newRow("unquoted, up to >")
        << "<a href=f.zip>x</a>" << link << QStringList{"http://h/dir/f.zip"} << false;
    QTest::newRow("unquoted, the nearest stop wins")
        << "<a href=f.zip x<y\">" << link << QStringList{"http://h/dir/f.zip"} << false;
    QTest::newRow("unquoted, the second character never stops it")
        << "<a href=a>b.zip c" << link << QStringList{"http://h/dir/a>b.zip"} << false;
    QTest::newRow("root-relative, completed against the folder")
        << "<a href=\"/files/a.zip\">" << link << QStringList{"http://h/dir/files/a.zip"} << false;
    QTest::newRow("dots") << "<a href=\"../up.zip\">" << link << QStringList{"http://h/up.zip"}
                          << false;
    QTest::newRow("absolute addresses kept")
        << "<a href=\"http://o/a\"><a href=\"https://o/b\"><a href=\"ftp://o/c\">" << link
        << QStringList{"http://o/a", "https://o/b", "ftp://o/c"} << false;
    QTest::newRow("upper-case scheme is relative")
        << "<a href=\"HTTP://o/a.zip\">" << link << QStringList{"http://h/dir/HTTP://o/a.zip"}
        << false;
    QTest::newRow("duplicates kept") << "<a href=\"a\"> <a href=\"a\">" << link
                                     << QStringList{"http://h/dir/a", "http://h/dir/a"} << false;
    QTest::newRow("pattern is case-sensitive")
        << "<A HREF=\"a.zip\">" << link << QStringList{} << false;
    QTest::newRow("pattern at the first character ends the scan")
        << "a href=\"a.zip\"><a href=\"b.zip\">" << link << QStringList{} << false;
    QTest::newRow("empty value runs on to the next quote")
        << "<a href=\"\">x</a> <a href=\"b.zip\">" << link
        << QStringList{"http://h/dir/\">x</a> <a href="} << false;
    QTest::newRow("images") << "<img src=\"p.gif\"><a href=\"a.zip\">" << QStringLiteral("img src=")
                            << QStringList{"http://h/dir/p.gif"} << false;
    QTest::newRow("unterminated quote keeps what came before")
        << "<a href=\"a.zip\"> <a href=\"b.zip" << link << QStringList{"http://h/dir/a.zip"}
        << true;
    QTest::newRow("unquoted value at the end of the page")
        << "<a href=\"a.zip\"> <a href=b.zip" << link << QStringList{"http://h/dir/a.zip"} << true;
    QTest::newRow("dots above the host")
        << "<a href=\"a.zip\"> <a href=\"../../../x\"> <a href=\"c.zip\">" << link
        << QStringList{"http://h/dir/a.zip"} << true;
}

void TestLinkExtraction::Add_Link()
{
    QFETCH(QString, code);
    QFETCH(QString, pattern);
    QFETCH(QStringList, addresses);
    QFETCH(bool, fails);

    const LinkList found = extractLinks(code, pattern, QStringLiteral("http://h/dir/"));
    QCOMPARE(found.addresses, addresses);
    QCOMPARE(found.failure.has_value(), fails);
}

void TestLinkExtraction::GetMainWeb_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("base");

    QTest::newRow("page") << "http://h/dir/p.htm"
                          << "http://h/dir/";
    QTest::newRow("folder") << "http://h/dir/"
                            << "http://h/dir/";
    QTest::newRow("index.html named") << "http://h/dir/index.html"
                                      << "http://h/dir/";
    QTest::newRow("no slash after the folder") << "http://h/dir"
                                               << "http://h/";
    QTest::newRow("query") << "http://h/dir/?q=1"
                           << "http://h/dir/";
    QTest::newRow("host alone is a file name") << "http://h"
                                               << "http://";
    QTest::newRow("no scheme") << "h/dir/p.htm"
                               << "h/dir/p.htm";
}

void TestLinkExtraction::GetMainWeb()
{
    QFETCH(QString, url);
    QFETCH(QString, base);
    QCOMPARE(::GetMainWeb(url), base);
}

void TestLinkExtraction::SearchExtension_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QStringList>("ext");
    QTest::addColumn<bool>("unwanted");

    QTest::newRow("ending") << "http://h/a.zip" << QStringList{"exe", "zip"} << false;
    QTest::newRow("ending with its dot") << "http://h/a.zip" << QStringList{".zip"} << false;
    QTest::newRow("plain suffix") << "http://h/a.gzip" << QStringList{"zip"} << false;
    QTest::newRow("case matters") << "http://h/a.ZIP" << QStringList{"zip"} << true;
    QTest::newRow("no ending matches") << "http://h/a.htm" << QStringList{"exe", "zip"} << true;
    QTest::newRow("no endings at all") << "http://h/a.zip" << QStringList{} << true;
    QTest::newRow("an empty ending matches all") << "http://h/a.htm" << QStringList{""} << false;
}

void TestLinkExtraction::SearchExtension()
{
    QFETCH(QString, address);
    QFETCH(QStringList, ext);
    QFETCH(bool, unwanted);
    QCOMPARE(::SearchExtension(address, ext), unwanted);
}

QTEST_GUILESS_MAIN(TestLinkExtraction)
#include "tst_linkextraction.moc"
