#include "homepage.h"
#include "webfixture.h"
#include "webnavigation.h"

#include <QRegularExpression>
#include <QTest>

class TestWebNavigation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void beforeNavigate_data();
    void beforeNavigate();
    void pageBoxes_data();
    void pageBoxes();
    void homePage_data();
    void homePage();
    void startPage();
};

void TestWebNavigation::beforeNavigate_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<bool>("follows");
    QTest::addColumn<QStringList>("added");
    QTest::addColumn<QStringList>("calls");
    QTest::addColumn<bool>("silent");

    const QString notice = "showMessageWindow|Se ha añadido %2 a la lista.|%1/msg/download.gif";
    const QString ding = "playSound|%1/msg/ding.wav";
    QTest::newRow("page") << "http://127.0.0.1/a.html" << true << QStringList() << QStringList()
                          << true;
    QTest::newRow("download") << "zelq:ftp://h/a%20b.zip?x#y" << false
                              << QStringList{"ftp://h/a%20b.zip?x#y"}
                              << QStringList{ding, notice.arg("%1", "ftp://h/a%20b.zip?x#y")}
                              << true;
    // `añadir` refuses an empty address with its own message; no notice follows.
    QTest::newRow("download without an address")
        << "zelq:" << false << QStringList{""} << QStringList() << true;
    QTest::newRow("upper case is a page")
        << "ZELQ:http://127.0.0.1/a.zip" << true << QStringList() << QStringList() << true;
    QTest::newRow("mail") << "mailto:ventas@example.com" << false << QStringList()
                          << QStringList{"openUrl|mailto:ventas@example.com"} << false;
    QTest::newRow("system browser") << "newwin:https://example.com/a?b" << false << QStringList()
                                    << QStringList{"openUrl|https://example.com/a?b"} << true;
}

void TestWebNavigation::beforeNavigate()
{
    QFETCH(QString, url);
    QFETCH(bool, follows);
    QFETCH(QStringList, added);
    QFETCH(QStringList, calls);
    QFETCH(bool, silent);
    WebFixture f;
    WebNavigation navigation(f.añadir(), f.notifier, f.desktop);
    navigation.setSilent(!silent);

    QCOMPARE(navigation.beforeNavigate(url), follows);
    QCOMPARE(f.added, added);
    QCOMPARE(f.desktop.calls, f.inFolder(calls));
    QCOMPARE(navigation.silent(), silent);
}

void TestWebNavigation::pageBoxes_data()
{
    QTest::addColumn<QStringList>("navigations");
    QTest::addColumn<bool>("shown");
    QTest::newRow("window opened") << QStringList() << false;
    QTest::newRow("after a mail link") << QStringList{"mailto:a@example.com"} << true;
    QTest::newRow("mail link, then a page")
        << QStringList{"mailto:a@example.com", "http://127.0.0.1/"} << false;
}

void TestWebNavigation::pageBoxes()
{
    QFETCH(QStringList, navigations);
    QFETCH(bool, shown);
    WebFixture f;
    WebNavigation navigation(f.añadir(), f.notifier, f.desktop);
    for (const QString &url : navigations)
        navigation.beforeNavigate(url);
    f.desktop.calls.clear();
    f.desktop.yesNoAnswers = {true, true};
    f.desktop.inputAnswers = {QString("Luis")};

    navigation.alert("Hola");
    QCOMPARE(navigation.confirm("¿Seguro?"), shown);
    QCOMPARE(navigation.prompt("Nombre", "Ana"),
             shown ? std::optional<QString>("Luis") : std::nullopt);
    QCOMPARE(navigation.acceptCertificate("127.0.0.1", "ERR_CERT_DATE_INVALID"), shown);
    const QStringList calls = {
        "messageBox|Exclamation|Hola|Navegador web", "askYesNo|¿Seguro?",
        "inputBox|Nombre|Ana|Navegador web",
        "askYesNo|El certificado de seguridad de 127.0.0.1 no es válido (ERR_CERT_DATE_INVALID). "
        "¿Desea abrir la página de todos modos?"};
    QCOMPARE(f.desktop.calls, shown ? calls : QStringList());
}

void TestWebNavigation::homePage_data()
{
    QTest::addColumn<QByteArray>("variable");
    QTest::addColumn<QUrl>("page");
    QTest::newRow("file name") << QByteArray("mi página.html")
                               << QUrl::fromLocalFile("/opt/corvane/mi página.html");
    QTest::newRow("absolute path") << QByteArray("/srv/p.html") << QUrl("file:///srv/p.html");
    QTest::newRow("address") << QByteArray("http://127.0.0.1:8080/p.html?a=1")
                             << QUrl("http://127.0.0.1:8080/p.html?a=1");
    QTest::newRow("blank page") << QByteArray("about:blank") << QUrl("about:blank");
}

void TestWebNavigation::homePage()
{
    QFETCH(QByteArray, variable);
    QFETCH(QUrl, page);
    qputenv("CORVANE_HOME_PAGE", variable);
    QCOMPARE(::homePage("/opt/corvane"), page);
    qunsetenv("CORVANE_HOME_PAGE");
    QCOMPARE(::homePageOf(QString::fromUtf8(variable), "/opt/corvane"), page);
}

// The page chosen when building is beside the program, and its "zelq:" examples are addresses
// the program accepts.
void TestWebNavigation::startPage()
{
    const QUrl page = ::homePage(qEnvironmentVariable("CORVANE_BIN_DIR"));
    if (!page.isLocalFile())
        QSKIP("The home page chosen when building is an address");
    QFile file(page.toLocalFile());
    QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(page.toLocalFile()));
    static const QRegularExpression link(QStringLiteral("href=\"zelq:([^\"]*)\""));
    int examples = 0;
    for (const auto &match : link.globalMatch(QString::fromUtf8(file.readAll()))) {
        ++examples;
        QVERIFY2(QRegularExpression("^(http|ftp)://[^/]+/.").match(match.captured(1)).hasMatch(),
                 qPrintable(match.captured(1)));
    }
    QVERIFY(examples >= 2);
}

QTEST_GUILESS_MAIN(TestWebNavigation)
#include "tst_webnavigation.moc"
