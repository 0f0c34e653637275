#include "browserstartup.h"
#include "scriptedhttpserver.h"
#include "webfixture.h"
#include "webwindow.h"

#include <QApplication>
#include <QEventLoop>
#include <QLabel>
#include <QSignalSpy>
#include <QStatusBar>
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
    "<a id=\"mailto\" href=\"mailto:ventas@example.com\">correo</a><br>"
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

QByteArray pathOf(const QByteArray &request)
{
    return request.split(' ').value(1);
}

// The browser window, with the page above as its home page on a local server.
struct WindowFixture : WebFixture
{
    ScriptedHttpServer server{[](const QByteArray &request, int) {
        const QByteArray path = pathOf(request);
        const QByteArray body = path == "/enlaces.html" ? LinksPage
                                : path == "/otra.html"  ? QByteArray("<p>Otra</p>")
                                                        : QByteArray();
        return ScriptedHttpServer::status(
            body.isEmpty() ? "HTTP/1.1 404 Not Found" : "HTTP/1.1 200 OK",
            "Content-Type: text/html; charset=utf-8\r\nConnection: close\r\nContent-Length: " +
                QByteArray::number(body.size()) + "\r\n",
            body);
    }};
    WebWindow window{añadir(), notifier, desktop, QUrl(server.url("enlaces.html"))};

    QWebEnginePage *page() const { return window.explorador()->page(); }
    QStatusBar *estado() const { return window.findChild<QStatusBar *>("estado"); }
    QString status() const { return estado()->findChild<QLabel *>()->text(); }

    // The paths asked of the server, the browser's icon requests aside.
    QByteArrayList fetched() const
    {
        QByteArrayList paths;
        for (const QByteArray &request : server.requests())
            paths.append(pathOf(request));
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

    void click(const QString &id)
    {
        QTest::mouseClick(window.explorador()->focusProxy(), Qt::LeftButton, {}, pointAt(id));
    }

    bool leaveForOtherPage()
    {
        QSignalSpy loaded(page(), &QWebEnginePage::loadFinished);
        click("page");
        return waitForPage("/otra.html", loaded);
    }
};

} // namespace

class TestWebWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void engineStartsOnFirstShow();
    void links_data();
    void links();
    void upperCaseIsFollowed();
};

void TestWebWindow::engineStartsOnFirstShow()
{
    WindowFixture f;
    QCoreApplication::processEvents();
    QCOMPARE(f.window.objectName(), "web");
    QCOMPARE(f.window.windowTitle(), "Navegador web");
    QVERIFY(f.window.explorador() == nullptr);
    QVERIFY(f.server.requests().isEmpty());

    QVERIFY(f.open());
    QCOMPARE(f.window.explorador()->objectName(), "explorador");
    QCOMPARE(f.fetched(), QByteArrayList{"/enlaces.html"});
    QCOMPARE(f.window.explorador()->geometry().bottom() + 1, f.estado()->geometry().top());

    // The status bar shows the link under the pointer, and what the page does otherwise.
    QCOMPARE(f.status(), "Listo");
    QWidget *surface = f.window.explorador()->focusProxy();
    QTest::mouseMove(surface, f.pointAt("newwin"));
    QVERIFY(waitUntil([&] { return f.status() == "newwin:http://127.0.0.1/fuera.html"; }));
    QTest::mouseMove(surface, QPoint(surface->width() - 5, surface->height() - 5));
    QVERIFY(waitUntil([&] { return f.status() == "Listo"; }));
}

void TestWebWindow::links_data()
{
    QTest::addColumn<QString>("link");
    QTest::addColumn<QStringList>("added");
    QTest::addColumn<QStringList>("calls");
    QTest::newRow("zelq:") << "zelq" << QStringList{"http://127.0.0.1/archivo.zip"}
                           << QStringList{"playSound|%1/msg/ding.wav",
                                          "showMessageWindow|Se ha añadido "
                                          "http://127.0.0.1/archivo.zip a la lista.|"
                                          "%1/msg/download.gif"};
    QTest::newRow("target=_blank") << "blank" << QStringList() << QStringList();
    QTest::newRow("newwin:") << "newwin" << QStringList()
                             << QStringList{"openUrl|http://127.0.0.1/fuera.html"};
    QTest::newRow("mailto:") << "mailto" << QStringList()
                             << QStringList{"openUrl|mailto:ventas@example.com"};
}

// Clicked, each link leaves the page where it is, opens no window and fetches nothing.
void TestWebWindow::links()
{
    QFETCH(QString, link);
    QFETCH(QStringList, added);
    QFETCH(QStringList, calls);
    WindowFixture f;
    QVERIFY(f.open());
    const QWidgetList windows = QApplication::topLevelWidgets();

    f.click(link);
    QVERIFY(f.leaveForOtherPage());

    QCOMPARE(f.added, added);
    QCOMPARE(f.desktop.calls, f.inFolder(calls));
    QCOMPARE(f.fetched(), (QByteArrayList{"/enlaces.html", "/otra.html"}));
    QCOMPARE(QApplication::topLevelWidgets(), windows);
}

// The web engine lowercases "ZELQ:", yet it is still followed like any other address; the lower
// case link still adds, also when a script clicks it.
void TestWebWindow::upperCaseIsFollowed()
{
    WindowFixture f;
    QVERIFY(f.open());
    f.evaluate("document.getElementById('upper').click()");
    QVERIFY(
        waitUntil([&] { return f.page()->url() == QUrl("zelq:http://127.0.0.1/mayusculas.zip"); }));
    QVERIFY(f.added.isEmpty());

    QSignalSpy loaded(f.page(), &QWebEnginePage::loadFinished);
    f.page()->triggerAction(QWebEnginePage::Back);
    QVERIFY(f.waitForPage("/enlaces.html", loaded));
    f.evaluate("document.getElementById('zelq').click()");
    QVERIFY(waitUntil([&] { return !f.added.isEmpty(); }));
    QCOMPARE(f.added, QStringList{"http://127.0.0.1/archivo.zip"});
    QVERIFY(f.desktop.callsOf("openUrl").isEmpty());
}

int main(int argc, char *argv[])
{
    prepareBrowser();
    QApplication app(argc, argv);
    TestWebWindow test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_webwindow.moc"
