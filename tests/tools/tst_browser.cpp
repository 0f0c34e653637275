#include "browserstartup.h"
#include "fakedesktop.h"
#include "homepage.h"
#include "notifier.h"
#include "scriptedhttpserver.h"
#include "settings.h"
#include "webwindow.h"

#include <QApplication>
#include <QEventLoop>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QWebEnginePage>
#include <QWebEngineView>

namespace {

// One link of each kind, one under the other.
const QByteArray LinksPage =
    "<!DOCTYPE html><html><head><meta charset=\"utf-8\"></head>"
    "<body style=\"margin: 0; font-size: 20px; line-height: 40px\">"
    "<a id=\"zelq\" href=\"zelq:http://127.0.0.1/archivo.zip\">zelq</a><br>"
    "<a id=\"blank\" target=\"_blank\" href=\"/ventana.html\">ventana nueva</a><br>"
    "<a id=\"newwin\" href=\"newwin:http://127.0.0.1/fuera.html\">newwin</a><br>"
    "<a id=\"upper\" href=\"ZELQ:http://127.0.0.1/mayusculas.zip\">ZELQ</a><br>"
    "<a id=\"page\" href=\"/otra.html\">otra página</a></body></html>";

// Runs the event loop until `done` holds. The web engine's work hops between threads and only
// flows in a running loop: QTest::qWaitFor's short sleeps slow it down many times over.
bool waitUntil(const std::function<bool()> &done)
{
    QEventLoop loop;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
        if (done())
            loop.quit();
    });
    poll.start(20);
    QTimer::singleShot(20000, &loop, &QEventLoop::quit);
    if (!done())
        loop.exec();
    return done();
}

// The browser window over a program folder holding its sound and picture, a scripted desktop,
// an `añadir` that records the addresses reaching it, and the page above as its home page on a
// local server.
struct BrowserFixture
{
    QTemporaryDir dir;
    Settings settings;
    FakeDesktop desktop;
    ProgramFolder folder{dir.path()};
    Notifier notifier{settings, desktop, folder};
    QStringList added;
    // Refuses an empty address, as the main window's does.
    WebNavigation::AddDownload añadir = [this](const QString &url) {
        added.append(url);
        return !url.isEmpty();
    };
    ScriptedHttpServer server{[](const QByteArray &request, int) {
        const QByteArray path = request.split(' ').value(1);
        const QByteArray body = path == "/enlaces.html" ? LinksPage : "<p>Otra</p>";
        return ScriptedHttpServer::status(
            "HTTP/1.1 200 OK",
            "Content-Type: text/html; charset=utf-8\r\nConnection: close\r\nContent-Length: " +
                QByteArray::number(body.size()) + "\r\n",
            body);
    }};
    WebWindow window{añadir, notifier, desktop, QUrl(server.url("enlaces.html"))};

    BrowserFixture()
    {
        QDir(dir.path()).mkdir("msg");
        for (const QString name : {"ding.wav", "download.gif"})
            QFile::copy(qEnvironmentVariable("CORVANE_SOURCE_DIR") + "/msg/" + name,
                        folder.file("msg/" + name));
    }

    QWebEnginePage *page() const { return window.explorador()->page(); }

    // The paths asked of the server, the browser's icon requests aside.
    QByteArrayList fetched() const
    {
        QByteArrayList paths;
        for (const QByteArray &request : server.requests())
            paths.append(request.split(' ').value(1));
        paths.removeAll("/favicon.ico");
        return paths;
    }

    // Waits until the page at `path` is loaded: what was asked before it has been dealt with.
    bool waitForPage(const QString &path, QSignalSpy &loaded)
    {
        return waitUntil([&] {
            return page()->url().path() == path && !loaded.isEmpty() &&
                   loaded.last().value(0).toBool();
        });
    }

    bool open()
    {
        window.show();
        QSignalSpy loaded(page(), &QWebEnginePage::loadFinished);
        return waitForPage("/enlaces.html", loaded) &&
               waitUntil([this] { return window.explorador()->focusProxy() != nullptr; });
    }

    QVariant evaluate(const QString &script)
    {
        auto result = std::make_shared<std::optional<QVariant>>();
        page()->runJavaScript(script, [result](const QVariant &value) { *result = value; });
        return waitUntil([result] { return result->has_value(); }) ? **result : QVariant();
    }

    // A point just inside the element `id`, where a person would point at it.
    QPoint pointAt(const QString &id)
    {
        const QString box = "document.getElementById('" + id + "').getBoundingClientRect()";
        const QVariantList xy = evaluate("[" + box + ".x + 5, " + box + ".y + 5]").toList();
        return xy.size() == 2 ? QPoint(xy[0].toInt(), xy[1].toInt()) : QPoint();
    }

    bool click(const QString &id, const QString &goesTo = {})
    {
        QSignalSpy loaded(page(), &QWebEnginePage::loadFinished);
        QTest::mouseClick(window.explorador()->focusProxy(), Qt::LeftButton, {}, pointAt(id));
        return goesTo.isEmpty() || waitForPage(goesTo, loaded);
    }
};

} // namespace

class TestBrowser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pageBoxes_data()
    {
        QTest::addColumn<QStringList>("navigations");
        QTest::addColumn<bool>("shown");
        QTest::newRow("after a mail link") << QStringList{"mailto:a@example.com"} << true;
        QTest::newRow("mail link, then a page")
            << QStringList{"mailto:a@example.com", "http://127.0.0.1/"} << false;
    }

    void pageBoxes()
    {
        QFETCH(QStringList, navigations);
        QFETCH(bool, shown);
        BrowserFixture f;
        WebNavigation navigation(f.añadir, f.notifier, f.desktop);
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
        const QStringList calls = {"messageBox|Exclamation|Hola|Navegador web", "askYesNo|¿Seguro?",
                                   "inputBox|Nombre|Ana|Navegador web",
                                   "askYesNo|El certificado de seguridad de 127.0.0.1 no es válido "
                                   "(ERR_CERT_DATE_INVALID). "
                                   "¿Desea abrir la página de todos modos?"};
        QCOMPARE(f.desktop.calls, shown ? calls : QStringList());
    }

    void homePage()
    {
        qputenv("CORVANE_HOME_PAGE", "mi página.html");
        QCOMPARE(::homePage("/opt/corvane"), QUrl::fromLocalFile("/opt/corvane/mi página.html"));
        qputenv("CORVANE_HOME_PAGE", "http://127.0.0.1:8080/p.html?a=1");
        QCOMPARE(::homePage("/opt/corvane"), QUrl("http://127.0.0.1:8080/p.html?a=1"));
        qunsetenv("CORVANE_HOME_PAGE");
    }

    void windowOpened()
    {
        BrowserFixture f;
        // The web engine starts only when the window is first shown.
        QCoreApplication::processEvents();
        QVERIFY(f.window.explorador() == nullptr);
        QVERIFY(f.server.requests().isEmpty());
        QVERIFY(f.open());
        QCOMPARE(f.fetched(), QByteArrayList{"/enlaces.html"});
        // The web engine lowercases "ZELQ:", yet it is still followed like any other address.
        f.evaluate("document.getElementById('upper').click()");
        QVERIFY(waitUntil(
            [&] { return f.page()->url() == QUrl("zelq:http://127.0.0.1/mayusculas.zip"); }));
        QVERIFY(f.added.isEmpty());
    }

    void links_data()
    {
        QTest::addColumn<QString>("link");
        QTest::addColumn<QStringList>("added");
        QTest::addColumn<QStringList>("calls");
        const QString zelq = "http://127.0.0.1/archivo.zip";
        QTest::newRow("zelq:") << "zelq" << QStringList{zelq}
                               << QStringList{"playSound|%1/msg/ding.wav",
                                              "showMessageWindow|Se ha añadido " + zelq +
                                                  " a la lista.|%1/msg/download.gif"};
        QTest::newRow("target=_blank") << "blank" << QStringList() << QStringList();
        QTest::newRow("newwin:") << "newwin" << QStringList()
                                 << QStringList{"openUrl|http://127.0.0.1/fuera.html"};
    }

    // Clicked, each link leaves the page where it is, opens no window and fetches nothing; a plain
    // link clicked afterwards is followed.
    void links()
    {
        QFETCH(QString, link);
        QFETCH(QStringList, calls);
        BrowserFixture f;
        QVERIFY(f.open());
        const QWidgetList windows = QApplication::topLevelWidgets();
        f.click(link);
        QVERIFY(f.click("page", "/otra.html"));
        QTEST(f.added, "added");
        QCOMPARE(f.desktop.calls.join("\n"), calls.join("\n").replace("%1", f.folder.dir()));
        QCOMPARE(f.fetched(), (QByteArrayList{"/enlaces.html", "/otra.html"}));
        QCOMPARE(QApplication::topLevelWidgets(), windows);
    }
};

int main(int argc, char *argv[])
{
    prepareBrowser();
    QApplication app(argc, argv);
    TestBrowser test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_browser.moc"
