// The auxiliary tools and their windows: the link grabber, the file-list import, the folder chooser
// they and the settings open, the history log, the browser.
#include "../engine/enginefixture.h"
#include "browserstartup.h"
#include "filelistwindow.h"
#include "folderwindow.h"
#include "historylog.h"
#include "historytext.h"
#include "historywindow.h"
#include "homepage.h"
#include "linkextraction.h"
#include "linkgrabberwindow.h"
#include "notifier.h"
#include "qtdesktop.h"
#include "scriptedhttpserver.h"
#include "testauthority.h"
#include "toolwidgets.h"
#include "urls.h"
#include "webwindow.h"

#include <QApplication>
#include <QClipboard>
#include <QEventLoop>
#include <QLineEdit>
#include <QListView>
#include <QPlainTextEdit>
#include <QProcess>
#include <QPushButton>
#include <QRadioButton>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QStringListModel>
#include <QTest>
#include <QTextBlock>
#include <QTimer>
#include <QWebEnginePage>
#include <QWebEngineView>

using Runs = QList<RtfRun>;

namespace {

const QStringList BuiltIn = {"exe", "zip", "ace", "tar", "iso", "bmp", "gif", "jpg"};

// The grabber and the import windows over both lists; the controls of `w` are found by name.
struct Fixture : EngineFixture
{
    LinkGrabberWindow grabber{active, inactive, settings, desktop, folder};
    FileListWindow import{active, inactive, settings, desktop};
    LinkGrabber &model = grabber.model();
    QWidget *w = &grabber;

    template <typename T> T *child(const QString &name) { return w->findChild<T *>(name); }
    void click(const QString &name) { QTest::mouseClick(child<QPushButton>(name), Qt::LeftButton); }
    // The list's texts, `root` taken off their front.
    QStringList shown(const QString &list, const QString &root = {})
    {
        QStringList texts = textsOf(child<QListView>(list))->stringList();
        return texts.replaceInStrings(QRegularExpression("^" + QRegularExpression::escape(root)),
                                      {});
    }
    void select(const QString &list, int row)
    {
        child<QListView>(list)->setCurrentIndex(child<QListView>(list)->model()->index(row, 0));
    }
    void open()
    {
        QGuiApplication::clipboard()->setText({});
        grabber.show();
    }
    // Types the address and presses "Procesar..."; `wait` for the lists.
    void fetch(const QString &url, bool wait = true)
    {
        child<QLineEdit>("direcc")->clear();
        QTest::keyClicks(child<QLineEdit>("direcc"), url);
        click("obtener");
        if (wait)
            QTRY_VERIFY_WITH_TIMEOUT(child<QPushButton>("obtener")->isEnabled(), 30000);
    }
    // Chooses a list file of that content in the open dialog of `loadlist`.
    void load(const QByteArray &content)
    {
        w = &import;
        write("lista.txt", content);
        desktop.fileAnswers = {path("lista.txt")};
        QVERIFY(import.model().loadlist());
        import.show();
    }
};

HttpReply page(const QByteArray &body, bool stall = false)
{
    HttpReply reply = HttpReply::of("HTTP/1.1 200 OK\r\n\r\n" + body);
    reply.stall = stall;
    return reply;
}

// Links and images in every kind of quotes; an empty page; an address that never ends; a
// page that stops coming after a link; 17 MB after a link.
HttpReply servePages(const QByteArray &request, int)
{
    const QByteArray path = request.split(' ').value(1);
    if (path.startsWith("/lenta"))
        return page("x<a href=\"first.zip\"> ...", true);
    if (path.startsWith("/grande")) {
        HttpReply reply = page("x<a href=\"first.zip\">", true);
        reply.chunks =
            QList<QByteArray>{reply.bytes} + QList<QByteArray>(17, QByteArray(1 << 20, 'x'));
        return reply;
    }
    return page(path.startsWith("/vacia")   ? "<p>nada</p>"
                : path.startsWith("/rota.") ? "<a href=\"a.zip\"> <a href=\"b.zip> ..."
                                            : "<a href=\"a.zip\"><img src='i.gif'><a href='b.htm'>"
                                              "<a href=c.exe>");
}

// A download as the grabber and the import place it: its address and path; "|odd" unless it
// resumes with the anonymous login and nothing remembered.
template <typename Record> QString placed(const Record &r)
{
    const bool usual = r.allowredo && !r.rememb && r.usernm + "/" + r.passw == "anonymous/freepwd";
    return r.Data + "|" + r.path + (usual ? "" : "|odd");
}

constexpr quint32 Red = HistoryColour::Red, Black = HistoryColour::Black,
                  Green = HistoryColour::Green;

// "colour:text | colour:text ...", neighbours of one colour joined, colours 0x00BBGGRR in
// decimal: one description for documents, the log and what its window shows.
QString describe(const Runs &runs)
{
    QStringList parts;
    quint32 colour = 0;
    for (const RtfRun &run : runs) {
        if (run.text.isEmpty())
            continue;
        if (parts.isEmpty() || run.colour != colour)
            parts << QString::number(run.colour) + QLatin1Char(':');
        parts.last() += run.text;
        colour = run.colour;
    }
    return parts.join(QStringLiteral(" | "));
}

// Block separators count as CR LF; the document keeps their format as the next block's.
QString describe(const QTextDocument &document)
{
    const auto colourOf = [](const QTextCharFormat &format) {
        const QColor c = format.foreground().color();
        return quint32(c.red()) | quint32(c.green()) << 8 | quint32(c.blue()) << 16;
    };
    Runs runs;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        for (auto it = block.begin(); !it.atEnd(); ++it)
            runs.append({it.fragment().text(), colourOf(it.fragment().charFormat())});
        if (block.next().isValid())
            runs.append({QStringLiteral("\r\n"), colourOf(block.next().charFormat())});
    }
    return describe(runs);
}

// What our reader makes of a file; "(not RTF)" when it refuses it.
QString described(const QByteArray &rtf)
{
    const std::optional<RtfDocument> document = Rtf::read(rtf);
    return document ? describe(document->runs) : QStringLiteral("(not RTF)");
}

QString textOf(const QByteArray &rtf)
{
    QString text;
    for (const RtfRun &run : Rtf::read(rtf).value_or(RtfDocument()).runs)
        text += run.text;
    return text;
}

// What unrtf, an independent reader, makes of `rtf` as plain lines (it prints Latin-1).
QStringList unrtfLines(const QByteArray &rtf)
{
    QTemporaryDir dir;
    if (!writeFile(dir.filePath("h.rtf"), rtf))
        return {"(no file)"};
    QProcess unrtf;
    unrtf.start("unrtf", {"--quiet", "--text", "--nopict", dir.filePath("h.rtf")});
    if (!unrtf.waitForFinished())
        return {"(unrtf did not run)"};
    const QString out = QString::fromLatin1(unrtf.readAllStandardOutput());
    return out.mid(out.indexOf("-----------------\n") + 18).split('\n');
}

// A history log over a fresh program folder, the scripted desktop and a fixed clock.
struct HistoryFixture : EngineFixture
{
    HistoryLog log{settings, desktop};

    HistoryFixture()
    {
        settings.histrut = path("historial.rtf");
        log.setClock([] { return QDateTime(QDate(2024, 1, 5), QTime(9, 3, 7)); });
    }
};

// The lines the fixture's clock gives.
const QString StartLine = QStringLiteral("Iniciado a las 09:03:07 el 05/01/2024");
const QString EndLine = QStringLiteral("Cerrado a las 09:03:07 el 05/01/2024\r\n");

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
struct BrowserFixture : EngineFixture
{
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

class TestTools : public QObject
{
    Q_OBJECT

    TestAuthority m_trusted, m_other;
    ServerCertificate m_local, m_untrusted;

private Q_SLOTS:
    void initTestCase()
    {
        // The grabber trusts what the downloads trust: the system's authorities and
        // SSL_CERT_FILE's.
        qputenv("SSL_CERT_FILE", m_trusted.certificateFile().toLocal8Bit());
        m_local = m_trusted.issue("local", "IP:127.0.0.1");
        m_untrusted = m_other.issue("otro", "IP:127.0.0.1");
        QVERIFY2(m_trusted.ok() && m_other.ok(), qPrintable(m_trusted.error() + m_other.error()));
    }

    // What a page's code puts in the lists, by the page's address and the wanted endings.
    // "-" marks an address no wanted ending matches, "!" a scan cut short by an error.
    void harvest_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QStringList>("found");
        QTest::addColumn<QString>("url");
        QTest::addColumn<QStringList>("endings");
        const auto row = [](const char *name, const QString &code, const QStringList &found,
                            const QString &url = "http://h/dir/p.htm",
                            const QStringList &endings = {"zip", ".exe"}) {
            QTest::newRow(name) << code << found << url << endings;
        };
        // Only a small-letter scheme makes an address absolute; a repeated link is listed again.
        row("address forms",
            "<a href=\"ftp://o/c.zip\"><a href=\"/r/f.zip\"><a href=\"../up.zip\">"
            "<a href=\"HTTP://E/u.zip\"><a href=\"/r/f.zip\">",
            {"ftp://o/c.zip", "http://h/dir/r/f.zip", "http://h/up.zip",
             "http://h/dir/HTTP://E/u.zip", "http://h/dir/r/f.zip"});
        row("unquoted value at the end of the page", "<a href=\"a.zip\"> <a href=b.zip",
            {"http://h/dir/a.zip", "!"});
        row("dots above the host", "<a href=\"a.zip\"> <a href=\"../../../x\"> <a href=\"c.zip\">",
            {"http://h/dir/a.zip", "!"});
        // The page's folder, by the page's address.
        row("no slash after the folder", "<a href=\"a.zip\">", {"http://h/a.zip"}, "http://h/dir");
        // Endings match as plain suffixes, with or without their dot, in their case.
        row("endings", "<a href=a.gzip><a href=b.ZIP><a href=c.exe><a href=d.htm>",
            {"http://h/dir/a.gzip", "-http://h/dir/b.ZIP", "http://h/dir/c.exe",
             "-http://h/dir/d.htm"});
    }
    void harvest()
    {
        QFETCH(QString, code);
        QFETCH(QString, url);
        QFETCH(QStringList, endings);
        const LinkList list = extractLinks(code, "a href=", GetMainWeb(url));
        QStringList found;
        for (const QString &address : list.addresses)
            found << (SearchExtension(address, endings) ? "-" : "") + address;
        if (list.failure)
            found << "!";
        QTEST(found, "found");
    }

    // A page from the scripted server over HTTP or TLS, from a server whose
    // certificate no authority we trust signed, or (server "") from the address `path`. `si`
    // and `no` are below the server's root unless absolute; * in `calls` is the system's text;
    // `asked` is how many times the server is asked for `path`, the second time with a slash after
    // it.
    void fetch_data()
    {
        QTest::addColumn<QString>("server");
        QTest::addColumn<QString>("option");
        QTest::addColumn<QString>("path");
        QTest::addColumn<QStringList>("si");
        QTest::addColumn<QStringList>("no");
        QTest::addColumn<QStringList>("calls");
        QTest::addColumn<int>("asked");
        const auto row = [](const char *name, const QString &server, const QString &option,
                            const QString &path, const QStringList &si, const QStringList &no,
                            const QStringList &calls = {}, int asked = 1) {
            QTest::newRow(name) << server << option << path << si << no << calls << asked;
        };
        const QString cut = "messageBox|Exclamation|La página %1: solo se buscan direcciones en "
                            "lo recibido hasta ahora.";
        const QStringList notice = {"showMessageWindow|*|"};
        // Single quotes count once they are made double on arrival.
        row("links, then images, over TLS", "https", "linkimg", "dir/p.htm",
            {"dir/a.zip", "dir/c.exe", "dir/i.gif"}, {"dir/b.htm"});
        // An address that may name a folder is tried once more with a slash.
        row("folder without its slash", "http", "linkonly", "vacia", {}, {}, {}, 2);
        // The status line counts: the address begins at character 45 of what arrived.
        row("unterminated quote", "http", "linkonly", "rota.htm", {"a.zip"}, {},
            {"messageBox|Critical|La dirección que empieza en el carácter 45 de la página no "
             "termina antes del final del texto."});
        row("17 MB page", "http", "linkonly", "grande.htm", {"first.zip"}, {},
            {cut.arg("pasa de 16 Mb")});
        row("page that never ends", "http", "linkonly", "lenta.htm", {"first.zip"}, {},
            {cut.arg("no ha terminado de llegar en 120 segundos")});
        row("connection refused", "", "linkonly", "http://127.0.0.1:9/p", {}, {}, notice, 0);
        row("certificate of an unknown authority", "untrusted", "linkonly", "p.htm", {}, {}, notice,
            0);
    }
    void fetch()
    {
        QFETCH(QString, server);
        QFETCH(QString, option);
        QFETCH(QString, path);
        QFETCH(int, asked);
        Fixture f;
        ScriptedHttpServer scripted(servePages, server == "https" ? m_local.configuration()
                                                : server == "untrusted"
                                                    ? m_untrusted.configuration()
                                                    : QSslConfiguration());
        const QString root = server.isEmpty() ? "" : scripted.url("");
        f.open();
        f.child<QRadioButton>(option)->click();

        const bool endless = path.startsWith("lenta");
        f.fetch(root + path, !endless);
        if (endless) {
            QTRY_VERIFY(f.model.fetch().code().contains("..."));
            f.model.fetch().timeLimitReached();
        }

        QList<QByteArray> requests;
        for (int i = 0; i < asked; ++i)
            requests << "GET /" + path.toUtf8() + (i ? "/" : "") +
                            " HTTP/1.1\r\nHost: " + HostLineOf(root).toUtf8() +
                            "\r\nConnection: close\r\n\r\n";
        if (!server.isEmpty())
            QCOMPARE(scripted.requests(), requests);
        QCOMPARE(f.child<QLineEdit>("direcc")->text(), root + path + (asked > 1 ? "/" : ""));
        QTEST(f.shown("si", root), "si");
        QTEST(f.shown("no", root), "no");
        QTEST(f.desktop.calls.replaceInStrings(QRegularExpression("^showMessageWindow\\|.+\\|"),
                                               "showMessageWindow|*|"),
              "calls");
        // A page is cut at the read that passed the limit, which may bring the few megabytes a
        // busy machine let pile up.
        QVERIFY(f.model.fetch().code().size() < 32 * 1024 * 1024);
        QVERIFY(f.child<QPushButton>("obtener")->isEnabled());
    }

    void editingAndAddtolist()
    {
        Fixture f;
        f.settings.maxdescval = 2;
        ScriptedHttpServer server([](const QByteArray &, int) {
            return page("<a href=\"1.zip\"><a href=\"2.zip\"><a href=\"3.htm\">"
                        "<a href=\"d/my%20file.zip\">");
        });
        const QString root = server.url("");
        f.open();
        f.fetch(server.url("p.htm"));

        f.select("no", 0);
        f.click("tosi");
        f.select("si", 0);
        f.click("tono");
        QCOMPARE(f.shown("si", root), QStringList({"2.zip", "d/my%20file.zip", "3.htm"}));
        QCOMPARE(f.shown("no", root), QStringList{"1.zip"});

        // An ending is added as typed; an empty answer or a cancel adds nothing.
        f.desktop.inputAnswers = {QString(".mp3"), QString(), std::nullopt};
        for (int i = 0; i < 3; ++i)
            f.click("adext");
        f.select("ext", 0);
        f.click("delext");
        const QStringList endings = BuiltIn.mid(1) + QStringList{".mp3"};
        QCOMPARE(f.shown("ext"), endings);

        QDir(f.dir.path()).mkdir("elegida");
        f.desktop.fileAnswers = {f.path("elegida")};
        f.click("brdir");
        f.click("addtolist");

        // Two run, the third waits; each in the chosen folder, with one separator, its name
        // decoded.
        QVERIFY(!f.grabber.isVisible());
        const QString folder = f.path("elegida") + QDir::separator();
        QCOMPARE(f.active.rowCount() + f.inactive.rowCount(), 5);
        QCOMPARE((QStringList{placed(f.active.slot(1)), placed(f.active.slot(2)),
                              placed(f.inactive.registro(1))}),
                 (QStringList{root + "2.zip|" + folder + "2.zip",
                              root + "d/my%20file.zip|" + folder + "my file.zip",
                              root + "3.htm|" + folder + "3.htm"}));
        QVERIFY(!f.inactive.registro(1).locked);
        // The endings are saved; the next opening shows them all after the built-in ones.
        QCOMPARE(f.read("listado.lst"), endings.join("\r\n") + "\r\n");
        f.open();
        QCOMPARE(f.shown("ext"), BuiltIn + endings);
    }

    // What is read of a list file stays; one that ends too soon is reported.
    void importReading_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("url");
        QTest::addColumn<QStringList>("names");
        QTest::newRow("odd last item dropped") << QByteArray("l\r\nhttp://h/d\r\n1\r\na.zip\r\n2")
                                               << "http://h/d" << QStringList{"a.zip"};
        QTest::newRow("quoted items keep their commas")
            << QByteArray("\"l\",\"http://h/d\",\"1\",\"a, b.zip\"") << "http://h/d"
            << QStringList{"a, b.zip"};
        QTest::newRow("one item") << QByteArray("l\r\n") << "" << QStringList();
    }
    void importReading()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, url);
        Fixture f;
        f.load(content);
        QTEST(f.child<QLineEdit>("url")->text(), "url");
        QTEST(f.shown("si"), "names");
        QCOMPARE(f.desktop.callsOf("messageBox"),
                 url.isEmpty() ? QStringList{"Critical|Se ha sobrepasado el final del archivo"}
                               : QStringList());
    }

    void addtolist_data()
    {
        QTest::addColumn<bool>("grabbed");
        QTest::addColumn<QString>("url");
        QTest::addColumn<int>("queued");
        QTest::addColumn<QStringList>("messages");
        // The base gets its slash. One fills the queue; each of the other two is told about.
        QTest::newRow("import, both lists full")
            << false << "http://h/d" << SlotCount - 2
            << QStringList(2, "Critical|Se ha alcanzado el límite de descargas");
        // Nothing can make room while the grabber adds: it says so once and stops.
        QTest::newRow("grabber, both lists full")
            << true << "" << SlotCount - 2
            << QStringList{"Critical|Se ha alcanzado el máximo de descargas en cola."};
    }
    // Four addresses, one of which may run: the first runs, the others wait while there is room.
    void addtolist()
    {
        QFETCH(bool, grabbed);
        QFETCH(QString, url);
        QFETCH(int, queued);
        Fixture f;
        f.settings.maxdescval = 1;
        for (int i = 0; i < queued; ++i)
            f.inactive.addnew({.Data = "http://h/q.zip", .path = "/q.zip"}, Loading::Yes);
        ScriptedHttpServer server([](const QByteArray &, int) {
            return page("<a href=\"a.zip\"><a href=\"b.zip\"><a href=\"c.zip\"><a href=\"d.zip\">");
        });
        if (grabbed) {
            f.open();
            f.fetch(server.url("d/p.htm"));
        } else {
            f.load("lista," + url.toUtf8() + ",1,a.zip,2,b.zip,3,c.zip,4,d.zip");
        }

        f.click("addtolist");

        const QString base = grabbed ? server.url("d/") : "http://h/d/";
        QVERIFY(!f.w->isVisible());
        QCOMPARE(f.active.rowCount(), 2);
        QCOMPARE(placed(f.active.slot(1)), base + "a.zip|" + f.path("a.zip"));
        QCOMPARE(f.inactive.rowCount(), qMin(SlotCount, 1 + queued + 3));
        QCOMPARE(placed(f.inactive.registro(queued + 1)), base + "b.zip|" + f.path("b.zip"));
        QTEST(f.desktop.callsOf("messageBox"), "messages");
    }

    // Made in the chosen folder "a", which holds "b"; a message follows "Error al crear la
    // carpeta: ".
    void newfolder_data()
    {
        QTest::addColumn<std::optional<QString>>("answer");
        QTest::addColumn<QString>("made");
        QTest::addColumn<QString>("message");
        const auto row = [](const char *name, std::optional<QString> answer, const QString &made,
                            const QString &message = {}) {
            QTest::newRow(name) << answer << made << message;
        };
        row("in the chosen folder", "nueva", "a/nueva");
        row("cancelled", std::nullopt, "");
        row("already there", "b", "", "File exists");
        row("name with a separator", "b/c", "", "el nombre no puede contener «/»");
    }
    void newfolder()
    {
        QFETCH(std::optional<QString>, answer);
        QFETCH(QString, made);
        QFETCH(QString, message);
        QTemporaryDir root;
        QVERIFY(QDir(root.path()).mkpath("a/b"));
        FakeDesktop desktop;
        desktop.inputAnswers = {answer};
        FolderChooser chooser(desktop, [] { return false; });
        chooser.setPath(root.filePath("a"));

        QCOMPARE(chooser.newfolder(), made.isEmpty() ? QString() : root.filePath(made));
        QStringList calls{"inputBox|Escriba el nombre de la nueva carpeta||Nueva Carpeta"};
        if (!message.isEmpty())
            calls << "messageBox|Critical|Error al crear la carpeta: " + message;
        QCOMPARE(desktop.calls, calls);
        QCOMPARE(QDir(root.filePath("a")).entryList(QDir::Dirs | QDir::NoDotAndDotDot),
                 made.isEmpty() ? QStringList{"b"} : QStringList({"b", "nueva"}));
    }

    // One window for every choice, through the program's desktop. The close box and Escape are
    // refused while the program runs; "Aceptar" hides it and the caller reads the path. At the
    // program's end its close box works, and the choice counts as cancelled.
    void folderWindow()
    {
        QTemporaryDir root;
        QtDesktop desktop{ProgramFolder(root.path())};
        bool ending = false;
        desktop.setGetunload([&] { return ending; });
        QList<QWidget *> seen;
        const auto choose = [&](const QString &folder) {
            QTimer::singleShot(0, [&] {
                auto *window = qobject_cast<FolderWindow *>(QApplication::activeModalWidget());
                seen.append(window);
                if (ending) {
                    window->close();
                    return;
                }
                QVERIFY(!window->close());
                QTest::keyClick(window, Qt::Key_Escape);
                QVERIFY(window->isVisible());
                window->findChild<QPushButton *>("acept")->click();
            });
            return desktop.chooseFolder(folder);
        };

        QCOMPARE(choose(root.path()), root.path());
        QCOMPARE(choose(QDir::homePath()), QDir::homePath());
        ending = true;
        QCOMPARE(choose(root.path()), QString());
        QVERIFY(seen[0] && seen[0] == seen[1] && seen[1] == seen[2]);
        QCOMPARE(seen[0]->windowTitle(), "Seleccionar carpeta");
        QPointer<QWidget> window = seen[0];
        desktop.unloadFolder();
        QVERIFY(window.isNull());
    }

    // What other editors write, and what no editor should: text and colours are kept as far as
    // they go, the rest skipped. Broken log files are read through the log below; the window
    // shows what the log holds (randomLog).
    void reading_data()
    {
        QTest::addColumn<QByteArray>("rtf");
        QTest::addColumn<QString>("runs");
        const auto row = [](const char *name, const QByteArray &rtf, const QString &runs) {
            QTest::newRow(name) << rtf << runs;
        };
        row("two fallback characters", "{\\rtf1{\\uc2\\u233\\'e9\\'e9x}\\u233?y}", "0:éxéy");
        row("colour ends with its group",
            "{\\rtf1{\\colortbl;\\red255\\green0\\blue0;}a{\\cf1 b}c\\foo9 d}",
            "0:a | 255:b | 0:cd");
        row("table without automatic entry",
            "{\\rtf1{\\colortbl\\red0\\green0\\blue255;}\\cf0 a\\cf7 b}", "16711680:a | 0:b");
        row("raw ANSI bytes", "{\\rtf1 a\xf1o \x80}", "0:año €");
        row("cut inside an escape", "{\\rtf1 ab\\'e", "0:ab");
        row("binary data past the end", "{\\rtf1 a\\bin99999 x}", "0:a");
        row("deep nesting", "{\\rtf1 " + QByteArray(200000, '{') + "x", "0:x");
        // Written by hand as a word processor would: font table, style sheet, information,
        // bookmark, field, a picture with binary data.
        row("another editor's file",
            readFile(qEnvironmentVariable("CORVANE_SOURCE_DIR") +
                     "/tests/tools/data/otro-editor.rtf"),
            "255:Iniciado a las 10:00:00 el 05/01/2024\r\n"
            " | 0:Configuración cambiada a las 10:00:05\r\n"
            " | 47872:Se continúa la descarga de C:\\descargas\\año.zip"
            " | 16711680: a las 10:00:06\r\n | 0:Precio:\t5 € y “cita”\r\n | 16711680:enlace"
            " | 0:\r\n | 255:fin {llaves}\r\n");
    }

    void reading()
    {
        QFETCH(QByteArray, rtf);
        QTEST(described(rtf), "runs");
    }

    // Each line is appended after a line break, in black. "#over:N" stands for a line of y's
    // just long enough to put the log N characters over the limit.
    void sizeLimit_data()
    {
        QTest::addColumn<int>("histsize");
        QTest::addColumn<QStringList>("lines");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("messages");
        // The start line's 37 characters weigh 48 in RTF (colour word and \par): after it goes
        // the log is 3 over, which "b" alone would fix, but the search goes on from position
        // 38 and takes b, c and the x's with it.
        QTest::newRow("several removed at once by the carried position")
            << 1 << QStringList{"b", "c", QString(60, 'x'), "#over:51"} << "#fill" << 0;
        QTest::newRow("one line longer than the limit")
            << 1 << QStringList{QString(2000, 'x')} << QString(2000, 'x') << 1;
        QTest::newRow("histsize 0 ends in the message")
            << 0 << QStringList{"uno", "dos"} << "dos" << 1;
    }

    void sizeLimit()
    {
        QFETCH(int, histsize);
        QFETCH(QStringList, lines);
        QFETCH(QString, text);
        HistoryFixture f;
        f.settings.histsize = histsize;
        f.log.open();
        QString filled;
        for (const QString &line : std::as_const(lines)) {
            f.log.append("\r\n" + (line.startsWith("#over:") ? QString() : line), Black);
            // The line before is black too, so the y's need no colour word of their own.
            if (line.startsWith("#over:")) {
                filled.fill('y', histsize * 1024 + line.mid(6).toInt() - f.log.rtfLength());
                f.log.append(filled, Black);
            }
        }
        QCOMPARE(f.log.text(), text.replace("#fill", filled));
        const QStringList messages = f.desktop.callsOf("messageBox");
        QTEST(int(messages.size()), "messages");
        for (const QString &message : messages)
            QVERIFY2(message.startsWith("Critical|Argumento no válido"), qPrintable(message));
    }

    // Whatever is appended, trimmed and cleared, the length kept equals that of the file written,
    // which is ASCII, reads back as the log and is written again the same; the window shows
    // exactly the log, not to be changed.
    void randomLog()
    {
        HistoryFixture f;
        f.settings.histsize = 1;
        HistoryWindow window(f.log);
        QVERIFY(window.findChild<QPlainTextEdit *>("texto")->isReadOnly());
        const QTextDocument &shown = *window.findChild<QPlainTextEdit *>("texto")->document();
        QRandomGenerator random(1);
        const QStringList words{"Descargando", "ñandú", "{x}",  "C:\\dir\\",  "\\par \\'e9",
                                "\t",          "€",     "😀",    "“x” Ā 日本", "\u00a0\x7f\x01",
                                "\r",          "\n",    "\r\n", " ",          "a las",
                                "99"};
        const QList<quint32> colours{Red, Black, Green, HistoryColour::DarkRed, 0x123456};
        for (int i = 0; i < 400; ++i) {
            QString line = random.bounded(3) ? QStringLiteral("\r\n") : QString();
            for (int w = int(random.bounded(12)); w >= 0; --w)
                line += words[random.bounded(words.size())];
            if (random.bounded(60) == 0)
                f.log.clear();
            else
                f.log.append(line, colours[random.bounded(colours.size())]);
            const QByteArray written = Rtf::write(f.log.document());
            QCOMPARE(f.log.rtfLength(), written.size());
            QVERIFY(std::all_of(written.begin(), written.end(),
                                [](char c) { return uchar(c) < 0x80; }));
            QCOMPARE(described(written), describe(f.log.document().runs));
            QCOMPARE(Rtf::write(Rtf::read(written).value()), written);
            QCOMPARE(describe(shown), describe(f.log.document().runs));
        }
        QVERIFY(f.log.rtfLength() <= 1024);
    }

    void runAfterRun()
    {
        HistoryFixture f;
        // The first line opens the log. The inactive window's lines have no line break: they run
        // on after the start line.
        f.log.append("Se continúa la descarga de C:\\d\\{año}.zip a las 09:03:08", Green);
        f.log.append("\r\nDescargando http://h/€.zip a /d/a.zip", Black);
        QVERIFY(f.log.close());
        f.log.append("\r\nperdida", Black);
        // An independent reader sees the same lines, accents included; for what Latin-1 lacks it
        // shows the fallback character.
        QCOMPARE(
            unrtfLines(f.read("historial.rtf")),
            (QStringList{StartLine + "Se continúa la descarga de C:\\d\\{año}.zip a las 09:03:08",
                         "Descargando http://h/?.zip a /d/a.zip", EndLine.chopped(2), ""}));

        // The next run starts where the last ended, on a line of its own.
        HistoryLog second(f.settings, f.desktop);
        second.setClock([] { return QDateTime(QDate(2024, 12, 31), QTime(23, 59, 59)); });
        second.open();
        QCOMPARE(describe(second.document().runs),
                 "255:" + StartLine +
                     " | 47872:Se continúa la descarga de C:\\d\\{año}.zip a las "
                     "09:03:08\r\n | 0:Descargando http://h/€.zip a /d/a.zip\r\n | 255:" +
                     EndLine + "Iniciado a las 23:59:59 el 31/12/2024");
        QVERIFY(f.desktop.calls.isEmpty());

        // A copy saved where the person chooses; a cancelled dialog saves nothing.
        f.desktop.fileAnswers = {f.path("copia.rtf"), QString()};
        QVERIFY(second.savehist());
        QCOMPARE(f.read("copia.rtf"), Rtf::write(second.document()));
        QVERIFY(!second.savehist());
        QCOMPARE(f.desktop.callsOf("saveFileDialog"), QStringList({"|*.rtf", "|*.rtf"}));
    }

    // histrut in a folder that holds a folder "carpeta" and an older "historial.rtf.bak"; `content`
    // at histrut unless null. A message ending in ": " goes on with the system's description.
    void badFile_data()
    {
        QTest::addColumn<QString>("histrut");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("message");
        const auto row = [](const char *name, const QString &histrut, const QByteArray &content,
                            const QString &text, const QString &message = {}) {
            QTest::newRow(name) << histrut << content << text << message;
        };
        const QString setAside = "Exclamation|El archivo de historial %1/historial.rtf no es un "
                                 "documento RTF. Se ha guardado como %1/historial.rtf.1.bak y el "
                                 "historial empieza vacío.";
        const QString unsaved = "Critical|No se ha podido guardar el historial en %1: ";
        row("truncated", "historial.rtf",
            "{\\rtf1{\\colortbl;\\red0\\green0\\blue255;}\\cf1 uno\\par do", "uno\r\ndo");
        // Kept under a free name, never overwritten.
        row("binary", "historial.rtf", QByteArray::fromHex("7f454c46020101000000"), "", setAside);
        row("a folder at histrut", "carpeta", {}, "", unsaved.arg("%1/carpeta"));
    }

    // The log starts from what could be read; what cannot be saved is said.
    void badFile()
    {
        QFETCH(QString, histrut);
        QFETCH(QByteArray, content);
        QFETCH(QString, text);
        QFETCH(QString, message);
        HistoryFixture f;
        QVERIFY(QDir(f.dir.path()).mkdir("carpeta"));
        QVERIFY(writeFile(f.path("historial.rtf.bak"), "older"));
        if (!content.isNull())
            QVERIFY(writeFile(f.path("historial.rtf"), content));
        f.settings.histrut = f.path(histrut);
        f.log.open();
        QCOMPARE(f.log.text(), text + StartLine);
        QCOMPARE(f.log.close(), !message.startsWith("Critical"));

        const QStringList messages = f.desktop.callsOf("messageBox");
        QCOMPARE(messages.size(), message.isEmpty() ? 0 : 1);
        message.replace("%1", f.dir.path());
        if (!message.isEmpty())
            QVERIFY2(message.endsWith(": ") ? messages[0].startsWith(message)
                                            : messages[0] == message,
                     qPrintable(messages[0]));
        if (!message.startsWith("Critical"))
            QCOMPARE(textOf(f.read("historial.rtf")), text + StartLine + "\r\n" + EndLine);
        QCOMPARE(f.read("historial.rtf.1.bak"),
                 message.contains(".1.bak") ? content : QByteArray());
        QCOMPARE(f.read("historial.rtf.bak"), "older");
    }

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
    prepareBrowser(); // as the program does, for the browser's window
    QApplication app(argc, argv);
    TestTools test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_tools.moc"
