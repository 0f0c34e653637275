#include "../engine/enginefixture.h"
#include "bigpage.h"
#include "filelistwindow.h"
#include "linkextraction.h"
#include "linkgrabberwindow.h"
#include "localservers.h"
#include "scriptedhttpserver.h"
#include "toolwidgets.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QLineEdit>
#include <QListView>
#include <QMimeData>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QStringListModel>
#include <QTest>
#include <QTimer>

namespace {

const QStringList BuiltInEndings = {"exe", "zip", "ace", "tar", "iso", "bmp", "gif", "jpg"};

// A window of the tools over both lists, a fresh program folder and the scripted desktop;
// controls are found by name.
struct ListsFixture : EngineFixture
{
    QWidget *w = nullptr;
    template <typename T> T *child(const QString &name) { return w->findChild<T *>(name); }
    void click(const QString &name) { QTest::mouseClick(child<QPushButton>(name), Qt::LeftButton); }
    QStringList shown(const QString &list) { return textsOf(child<QListView>(list))->stringList(); }
    void select(const QString &list, int row)
    {
        child<QListView>(list)->setCurrentIndex(child<QListView>(list)->model()->index(row, 0));
    }
    void fill(InactiveList &list, int count)
    {
        for (int i = 0; i < count; ++i)
            list.addnew("http://h/q.zip", "/tmp/q.zip", 0, 0, true, 0, true, "", "", false, false);
    }
};

// The grabber, with the sound and the picture of its error notice in the program folder.
struct GrabberFixture : ListsFixture
{
    LinkGrabberWindow window{active, inactive, settings, desktop, folder};
    LinkGrabber &model = window.model();

    GrabberFixture()
    {
        w = &window;
        QDir(dir.path()).mkdir("msg");
        write("msg/ding.wav", "RIFF");
        write("msg/error.gif", "GIF89a");
    }
    void open(const QString &clipboard = {})
    {
        QGuiApplication::clipboard()->setText(clipboard);
        window.show();
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
};

struct ImportFixture : ListsFixture
{
    FileListWindow window{active, inactive, settings, desktop};

    ImportFixture() { w = &window; }
    // Chooses a list file of that content in the open dialog of `loadlist`.
    void load(const QByteArray &content)
    {
        write("lista.txt", content);
        desktop.fileAnswers = {path("lista.txt")};
        QVERIFY(window.model().loadlist());
        window.show();
    }
};

HttpReply page(const QByteArray &body, bool stall = false)
{
    HttpReply reply = HttpReply::of("HTTP/1.1 200 OK\r\n\r\n" + body);
    reply.stall = stall;
    return reply;
}

// Links and images in every kind of quotes; an empty page; an address that never ends; a
// page that stops coming after a link.
HttpReply servePages(const QByteArray &request, int)
{
    const QByteArray path = request.split(' ').value(1);
    if (path.startsWith("/lenta"))
        return page("x<a href=\"first.zip\"> ...", true);
    return page(path.startsWith("/vacia")   ? "<p>nada</p>"
                : path.startsWith("/rota.") ? "<a href=\"a.zip\"> <a href=\"b.zip> ..."
                                            : "<a href=\"a.zip\"><img src='i.gif'><a href='b.htm'>"
                                              "<a href=c.exe>");
}

// A download as the grabber and the import place it: resuming, with the anonymous login, and
// nothing remembered.
template <typename Record> QString placed(const Record &r)
{
    return QStringList{r.Data, r.path, r.usernm + "/" + r.passw, r.allowredo ? "resumes" : "",
                       r.rememb ? "remembered" : ""}
        .join('|');
}
QString asPlaced(const QString &url, const QString &path)
{
    return url + "|" + path + "|anonymous/freepwd|resumes|";
}

} // namespace

class TestLinkGrabber : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void Add_Link_data();
    void Add_Link();
    void GetMainWeb_data();
    void GetMainWeb();
    void SearchExtension_data();
    void SearchExtension();
    void opening();
    void fetch_data();
    void fetch();
    void bigPageKeepsTheProgramAlive();
    void editingAndAddtolist();
    void addtolistBothListsFull();
    void importReading_data();
    void importReading();
    void importLoadlist();
    void importAddtolist_data();
    void importAddtolist();

private:
    TestAuthority m_trusted, m_other;
    ServerCertificate m_local, m_untrusted;
    QTemporaryDir m_pages;
    NginxServer m_nginx{m_pages.path()};
};

void TestLinkGrabber::initTestCase()
{
    // The grabber checks certificates against the system's authorities, ours among them.
    QSslConfiguration trusting = QSslConfiguration::defaultConfiguration();
    trusting.addCaCertificates(m_trusted.certificateFile());
    QSslConfiguration::setDefaultConfiguration(trusting);
    m_local = m_trusted.issue("local", "IP:127.0.0.1");
    m_untrusted = m_other.issue("otro", "IP:127.0.0.1");
    QVERIFY2(m_trusted.ok() && m_other.ok(), qPrintable(m_trusted.error() + m_other.error()));

    // The saved pages nginx serves: links of every kind, 5 MB with 20 000 links, and 100 MB of
    // binary data after a link.
    QDir(m_pages.path()).mkdir("pages");
    const auto save = [this](const QString &name, const QByteArray &bytes, qint64 size = 0) {
        QFile file(m_pages.filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        QVERIFY(!size || file.resize(size));
    };
    save("pages/index.html",
         "<html><body>\n"
         "<a href=\"double.zip\">1</a> <a href='single.zip'>2</a> <a href=unquoted.zip>3</a>\n"
         "<a href=\"sub/relative.exe\">4</a> <a href=\"/rooted/file.zip\">5</a>\n"
         "<a href=\"../up.zip\">6</a> <a href=\"HTTP://EXAMPLE.ORG/upper.zip\">7</a>\n"
         "<a href=\"http://example.org/abs.html\">8</a> <a href=\"double.zip\">9</a>\n"
         "<img src=\"pic.gif\"> <img src='photo.png'>\n"
         "</body></html>\n");
    save("big.html", bigPage(20000, 5 * 1024 * 1024));
    save("page.bin", "x<a href=\"first.zip\">" + randomBytes(1024 * 1024), 100 * 1024 * 1024);
    QVERIFY2(m_nginx.start(), qPrintable(m_nginx.error()));
}

// Every page is taken from http://h/dir/p.htm: the base is http://h/dir/. "!" ends the
// addresses of a scan cut short by an error.
void TestLinkGrabber::Add_Link_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QStringList>("addresses");
    QTest::addColumn<QString>("pattern");
    const auto row = [](const char *name, const QString &code, const QStringList &addresses,
                        const QString &pattern = "a href=") {
        QTest::newRow(name) << code << addresses << pattern;
    };
    row("double quotes", "<a href=\"f.zip\">", {"http://h/dir/f.zip"});
    row("unquoted, up to >", "<a href=f.zip>x</a>", {"http://h/dir/f.zip"});
    row("unquoted, the nearest stop wins", "<a href=f.zip x<y\">", {"http://h/dir/f.zip"});
    row("unquoted, the second character never stops it", "<a href=a>b.zip c",
        {"http://h/dir/a>b.zip"});
    row("root-relative, completed against the folder", "<a href=\"/files/a.zip\">",
        {"http://h/dir/files/a.zip"});
    row("dots", "<a href=\"../up.zip\">", {"http://h/up.zip"});
    row("absolute addresses kept",
        "<a href=\"http://o/a\"><a href=\"https://o/b\"><a href=\"ftp://o/c\">",
        {"http://o/a", "https://o/b", "ftp://o/c"});
    row("upper-case scheme is relative", "<a href=\"HTTP://o/a.zip\">",
        {"http://h/dir/HTTP://o/a.zip"});
    row("duplicates kept", "<a href=\"a\"> <a href=\"a\">", {"http://h/dir/a", "http://h/dir/a"});
    row("pattern is case-sensitive", "<A HREF=\"a.zip\">", {});
    row("pattern at the first character ends the scan", "a href=\"a.zip\"><a href=\"b.zip\">", {});
    row("empty value runs on to the next quote", "<a href=\"\">x</a> <a href=\"b.zip\">",
        {"http://h/dir/\">x</a> <a href="});
    row("images", "<img src=\"p.gif\"><a href=\"a.zip\">", {"http://h/dir/p.gif"}, "img src=");
    row("unterminated quote keeps what came before", "<a href=\"a.zip\"> <a href=\"b.zip",
        {"http://h/dir/a.zip", "!"});
    row("unquoted value at the end of the page", "<a href=\"a.zip\"> <a href=b.zip",
        {"http://h/dir/a.zip", "!"});
    row("dots above the host", "<a href=\"a.zip\"> <a href=\"../../../x\"> <a href=\"c.zip\">",
        {"http://h/dir/a.zip", "!"});
}

void TestLinkGrabber::Add_Link()
{
    QFETCH(QString, code);
    QFETCH(QString, pattern);
    const LinkList found = extractLinks(code, pattern, QStringLiteral("http://h/dir/"));
    QTEST(found.addresses + (found.failure ? QStringList{"!"} : QStringList()), "addresses");
}

void TestLinkGrabber::GetMainWeb_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("base");
    const auto row = [](const char *name, const QString &url, const QString &base) {
        QTest::newRow(name) << url << base;
    };
    row("page", "http://h/dir/p.htm", "http://h/dir/");
    row("folder", "http://h/dir/", "http://h/dir/");
    row("index.html named", "http://h/dir/index.html", "http://h/dir/");
    row("no slash after the folder", "http://h/dir", "http://h/");
    row("query", "http://h/dir/?q=1", "http://h/dir/");
    row("host alone is a file name", "http://h", "http://");
    row("no scheme", "h/dir/p.htm", "h/dir/p.htm");
}

void TestLinkGrabber::GetMainWeb()
{
    QFETCH(QString, url);
    QTEST(::GetMainWeb(url), "base");
}

void TestLinkGrabber::SearchExtension_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QStringList>("ext");
    QTest::addColumn<bool>("unwanted");
    const auto row = [](const char *name, const QString &address, const QStringList &ext,
                        bool unwanted) { QTest::newRow(name) << address << ext << unwanted; };
    row("ending", "http://h/a.zip", {"exe", "zip"}, false);
    row("ending with its dot", "http://h/a.zip", {".zip"}, false);
    row("plain suffix", "http://h/a.gzip", {"zip"}, false);
    row("case matters", "http://h/a.ZIP", {"zip"}, true);
    row("no ending matches", "http://h/a.htm", {"exe", "zip"}, true);
    row("no endings at all", "http://h/a.zip", {}, true);
    row("an empty ending matches all", "http://h/a.htm", {""}, false);
}

void TestLinkGrabber::SearchExtension()
{
    QFETCH(QString, address);
    QFETCH(QStringList, ext);
    QTEST(::SearchExtension(address, ext), "unwanted");
}

void TestLinkGrabber::opening()
{
    GrabberFixture f;
    f.write("listado.lst", "pdf\r\n.mp3\r\n");
    f.settings.defdir = f.dir.path();
    ScriptedHttpServer server([](const QByteArray &, int) { return page("<a href=\"a\">", true); });

    // A clipboard text is the address only when it begins "http://" or "https://".
    f.open("HTTP://h/p.htm");
    QCOMPARE(f.window.windowTitle(), "Obtener listado de archivos");
    QCOMPARE(f.child<QLineEdit>("direcc")->text(), "");
    QCOMPARE(f.child<QLineEdit>("destdir")->text(), f.dir.path() + QDir::separator());
    QCOMPARE(f.shown("ext"), BuiltInEndings + QStringList({"pdf", ".mp3"}));

    // Closing stops a fetch under way; each opening starts afresh.
    f.child<QRadioButton>("imgonly")->click();
    f.fetch(server.url("p.htm"), false);
    QTRY_COMPARE(server.requests().size(), 1);
    for (const QString clipboard : {"http://h/p.htm", "https://h/p.htm"}) {
        f.window.close();
        QVERIFY(!f.model.fetch().running());
        f.open(clipboard);
        QCOMPARE(f.child<QLineEdit>("direcc")->text(), clipboard);
    }
    QVERIFY(f.child<QPushButton>("obtener")->isEnabled());
    QVERIFY(f.child<QRadioButton>("linkonly")->isChecked());
    QVERIFY(f.shown("si").isEmpty());
}

// A page from the scripted server over HTTP or TLS, from nginx, from a server whose certificate
// no authority we trust signed, or (server "") from the address `path`. `si` and `no` are below
// the server's root unless absolute; %1 in `calls` is the program folder, * any text; `asked`
// is how many times the server is asked for `path`, the second time with a slash after it.
void TestLinkGrabber::fetch_data()
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
    const QString cut = "messageBox|Exclamation|La página %1: solo se buscan direcciones en lo "
                        "recibido hasta ahora.";
    const QStringList notice = {"playSound|%1/msg/ding.wav",
                                "showMessageWindow|*|%1/msg/error.gif"};
    quint16 closed = 0;
    {
        QTcpServer probe;
        probe.listen(QHostAddress::LocalHost, 0);
        closed = probe.serverPort();
    }
    // Single quotes count once they are made double on arrival.
    row("links", "http", "linkonly", "dir/p.htm", {"dir/a.zip", "dir/c.exe"}, {"dir/b.htm"});
    row("images", "http", "imgonly", "dir/p.htm", {"dir/i.gif"}, {});
    row("links, then images, over TLS", "https", "linkimg", "dir/p.htm",
        {"dir/a.zip", "dir/c.exe", "dir/i.gif"}, {"dir/b.htm"});
    // An address that may name a folder is tried once more with a slash.
    row("folder without its slash", "http", "linkonly", "vacia", {}, {}, {}, 2);
    row("no links in a page with an extension", "https", "linkonly", "vacia/p.htm", {}, {});
    // The status line counts: the address begins at character 45 of what arrived.
    row("unterminated quote", "http", "linkonly", "rota.htm", {"a.zip"}, {},
        {"messageBox|Critical|La dirección que empieza en el carácter 45 de la página no termina "
         "antes del final del texto."});
    // nginx redirects to the folder with its slash, in a page that holds no links.
    row("saved page", "nginx", "linkimg", "pages",
        {"pages/double.zip", "pages/single.zip", "pages/unquoted.zip", "pages/sub/relative.exe",
         "pages/rooted/file.zip", "up.zip", "pages/HTTP://EXAMPLE.ORG/upper.zip",
         "pages/double.zip", "pages/pic.gif"},
        {"http://example.org/abs.html", "pages/photo.png"}, {}, 2);
    row("100 MB page", "nginx", "linkonly", "page.bin", {"first.zip"}, {},
        {cut.arg("pasa de 16 Mb")});
    row("page that never ends", "http", "linkonly", "lenta.htm", {"first.zip"}, {},
        {cut.arg("no ha terminado de llegar en 120 segundos")});
    // The address can be corrected and fetched again.
    row("no scheme", "", "linkonly", "www.example.org/p.htm", {}, {},
        {"messageBox|Critical|Dirección incorrecta."}, 0);
    row("port without a slash after it", "", "linkonly", "http://127.0.0.1:8080", {}, {},
        {"messageBox|Critical|El puerto de la dirección no va seguido de \"/\""}, 0);
    // The notice carries the system's description of the error.
    row("connection refused", "", "linkonly", QStringLiteral("http://127.0.0.1:%1/p").arg(closed),
        {}, {}, notice, 0);
    row("certificate of an unknown authority", "untrusted", "linkonly", "p.htm", {}, {}, notice, 0);
}

void TestLinkGrabber::fetch()
{
    QFETCH(QString, server);
    QFETCH(QString, option);
    QFETCH(QString, path);
    QFETCH(QStringList, si);
    QFETCH(QStringList, no);
    QFETCH(QStringList, calls);
    QFETCH(int, asked);
    GrabberFixture f;
    ScriptedHttpServer plain(servePages), tls(servePages, m_local.configuration()),
        untrusted(servePages, m_untrusted.configuration());
    ScriptedHttpServer &scripted = server == "https"       ? tls
                                   : server == "untrusted" ? untrusted
                                                           : plain;
    const QString root = server.isEmpty()    ? ""
                         : server == "nginx" ? m_nginx.url("")
                                             : scripted.url("");
    f.open();
    f.child<QRadioButton>(option)->click();

    f.fetch(root + path, !path.startsWith("lenta"));
    if (path.startsWith("lenta")) {
        QTRY_VERIFY(f.model.fetch().text().contains("..."));
        f.model.fetch().timeLimitReached();
    }

    QList<QByteArray> requests;
    for (int i = 0; i < asked; ++i)
        requests << "GET /" + path.toUtf8() + (i ? "/" : "") +
                        " HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n\r\n";
    if (server != "nginx" && !server.isEmpty())
        QCOMPARE(scripted.requests(), requests);
    QCOMPARE(f.child<QLineEdit>("direcc")->text(), root + path + (asked > 1 ? "/" : ""));
    for (QStringList *list : {&si, &no}) {
        for (QString &name : *list)
            name = name.startsWith("http://") ? name : root + name;
    }
    QCOMPARE(f.shown("si"), si);
    QCOMPARE(f.shown("no"), no);
    const qsizetype found = si.size() + no.size();
    QCOMPARE(f.window.windowTitle(), found ? QString::number(found) + " direcciones encontradas"
                                     : calls.isEmpty() ? QString("No se han encontrado resultados")
                                                       : QString("Obtener listado de archivos"));
    QCOMPARE(f.desktop.calls.size(), calls.size());
    for (qsizetype i = 0; i < calls.size(); ++i) {
        QString call =
            QRegularExpression::escape(calls[i].arg(f.folder.dir())).replace("\\*", ".+");
        QVERIFY2(QRegularExpression("^" + call + "$").match(f.desktop.calls[i]).hasMatch(),
                 qPrintable(f.desktop.calls[i]));
    }
    // A page is cut at the read that passed the limit, which may bring the few megabytes a busy
    // machine let pile up.
    QVERIFY(f.model.fetch().text().size() < 32 * 1024 * 1024);
    QVERIFY(f.child<QLineEdit>("direcc")->isEnabled());
    QVERIFY(f.child<QPushButton>("obtener")->isEnabled());
}

void TestLinkGrabber::bigPageKeepsTheProgramAlive()
{
    GrabberFixture f;
    f.open();
    // A timer due at once fires while the addresses are being added.
    qsizetype seenWhileScanning = 0;
    QTimer ticker;
    QObject::connect(&ticker, &QTimer::timeout, &f.window, [&] {
        if (f.model.scanning() && seenWhileScanning == 0)
            seenWhileScanning = f.model.si().size() + f.model.no().size();
    });
    ticker.start(0);

    f.fetch(m_nginx.url("big.html"));

    QVERIFY(seenWhileScanning > 0 && seenWhileScanning < 20000);
    QCOMPARE(f.shown("si").size() + f.shown("no").size(), 20000);
    QCOMPARE(f.window.windowTitle(), "20000 direcciones encontradas");
    QCOMPARE(f.shown("no").first(), m_nginx.url("docs/f2.txt"));
}

void TestLinkGrabber::editingAndAddtolist()
{
    GrabberFixture f;
    f.settings.maxdescval = 2;
    ScriptedHttpServer server([](const QByteArray &, int) {
        return page(
            "<a href=\"1.zip\"><a href=\"2.zip\"><a href=\"3.htm\"><a href=\"d/my%20file.zip\">");
    });
    f.open();
    f.fetch(server.url("p.htm"));
    const auto urls = [&](const QStringList &names) {
        QStringList urls;
        for (const QString &name : names)
            urls << server.url(name);
        return urls;
    };

    f.click("tosi"); // nothing selected
    f.select("no", 0);
    f.click("tosi");
    QCOMPARE(f.shown("si"), urls({"1.zip", "2.zip", "d/my%20file.zip", "3.htm"}));
    QVERIFY(f.shown("no").isEmpty());
    f.select("si", 0);
    f.click("tono");
    QCOMPARE(f.shown("si"), urls({"2.zip", "d/my%20file.zip", "3.htm"}));
    QCOMPARE(f.shown("no"), urls({"1.zip"}));

    // An ending is added as typed; an empty answer or a cancel adds nothing.
    f.desktop.inputAnswers = {QString(".mp3"), QString(), std::nullopt};
    for (int i = 0; i < 3; ++i)
        f.click("adext");
    QCOMPARE(f.desktop.callsOf("inputBox"),
             QStringList(3, "Escriba la extensión del archivo (exe, zip, gif) con o sin puntos.|"));
    f.select("ext", 0);
    f.click("delext");
    const QStringList endings = BuiltInEndings.mid(1) + QStringList{".mp3"};
    QCOMPARE(f.shown("ext"), endings);

    // A dropped text replaces the address. Only a drag under way hands a drop to a field, so
    // the drop is handed over here as the drag would.
    QMimeData data;
    data.setText("http://dejada/q.htm");
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    static_cast<QObject &>(f.window).eventFilter(f.child<QLineEdit>("direcc"), &drop);
    QCOMPARE(f.child<QLineEdit>("direcc")->text(), "http://dejada/q.htm");

    QDir(f.dir.path()).mkdir("elegida");
    f.desktop.fileAnswers = {f.path("elegida")};
    f.click("brdir");
    f.click("addtolist");

    // Two run, the third waits; each in the chosen folder, with one separator, its name decoded.
    QVERIFY(!f.window.isVisible());
    const QString folder = f.path("elegida") + QDir::separator();
    QCOMPARE(f.active.rowCount(), 3);
    QCOMPARE(f.inactive.rowCount(), 2);
    QCOMPARE((QStringList{placed(f.active.slotAt(1)), placed(f.active.slotAt(2)),
                          placed(f.inactive.registro(1))}),
             (QStringList{asPlaced(server.url("2.zip"), folder + "2.zip"),
                          asPlaced(server.url("d/my%20file.zip"), folder + "my file.zip"),
                          asPlaced(server.url("3.htm"), folder + "3.htm")}));
    QVERIFY(!f.inactive.registro(1).locked);
    // The endings are saved; the next opening shows them after the built-in ones.
    QCOMPARE(f.read("listado.lst"), endings.join("\r\n") + "\r\n");
    f.open();
    QCOMPARE(f.shown("ext"), BuiltInEndings + endings);
}

void TestLinkGrabber::addtolistBothListsFull()
{
    GrabberFixture f;
    f.settings.maxdescval = 1;
    f.fill(f.inactive, SlotCount - 1);
    ScriptedHttpServer server([](const QByteArray &, int) {
        return page("<a href=\"1.zip\"><a href=\"2.zip\"><a href=\"3.zip\">");
    });
    f.open();
    f.fetch(server.url("p.htm"));

    f.click("addtolist");

    // One runs; the queue is full, which is said once, not for every address left.
    QCOMPARE(f.active.rowCount(), 2);
    QCOMPARE(f.desktop.callsOf("messageBox"),
             QStringList{"Critical|Se ha alcanzado el máximo de descargas en cola."});
}

void TestLinkGrabber::importReading_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("url");
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<bool>("complete");
    const QStringList ab{"a.zip", "b.zip"};
    QTest::newRow("an item a line") << QByteArray("l\r\nhttp://h/d\r\n1\r\na.zip\r\n2\r\nb.zip\r\n")
                                    << "http://h/d" << ab << true;
    QTest::newRow("commas") << QByteArray("l,http://h/d,1,a.zip,2,b.zip") << "http://h/d" << ab
                            << true;
    QTest::newRow("pairs a line") << QByteArray("l,http://h/d\n1,a.zip\n2,b.zip\n") << "http://h/d"
                                  << ab << true;
    QTest::newRow("odd last item dropped")
        << QByteArray("l,http://h/d,1,a.zip,2") << "http://h/d" << QStringList{"a.zip"} << true;
    QTest::newRow("quoted items keep their commas")
        << QByteArray("\"l\",\"http://h/d\",\"1\",\"a, b.zip\"") << "http://h/d"
        << QStringList{"a, b.zip"} << true;
    QTest::newRow("address only") << QByteArray("l\r\nhttp://h/d\r\n") << "http://h/d"
                                  << QStringList{} << true;
    QTest::newRow("one item") << QByteArray("l\r\n") << "" << QStringList{} << false;
    QTest::newRow("empty") << QByteArray() << "" << QStringList{} << false;
}

void TestLinkGrabber::importReading()
{
    QFETCH(QByteArray, content);
    QFETCH(bool, complete);
    ImportFixture f;

    f.load(content);

    QTEST(f.child<QLineEdit>("url")->text(), "url");
    QTEST(f.shown("si"), "names");
    // A file that ends too soon is reported; what was read of it stays.
    QCOMPARE(f.desktop.callsOf("messageBox"),
             complete ? QStringList{}
                      : QStringList{"Critical|Se ha sobrepasado el final del archivo"});
}

void TestLinkGrabber::importLoadlist()
{
    ImportFixture f;
    f.settings.defdir = "/srv/bajadas/";

    // Cancelling the dialog does nothing.
    QVERIFY(!f.window.model().loadlist());
    QCOMPARE(f.desktop.calls, QStringList{"openFileDialog|/srv/bajadas/|"});

    // The menu entry: the chosen file is read, then the window shown modally.
    f.write("lista.txt", "l,http://h/d,1,a.zip,2,b.zip");
    f.desktop.fileAnswers = {f.path("lista.txt")};
    bool modal = false;
    QTimer::singleShot(0, &f.window, [&] {
        modal = f.window.isVisible() && f.window.isModal();
        f.window.close();
    });
    f.window.loadlist();
    QVERIFY(modal);
    QCOMPARE(f.window.windowTitle(), "Listado de archivos");
    QCOMPARE(f.child<QLineEdit>("destdir")->text(), "/srv/bajadas/");

    // Moving a name, then loading another list, which starts afresh.
    f.select("si", 0);
    f.click("tono");
    QCOMPARE(f.shown("no"), QStringList{"a.zip"});
    f.load("l,http://o/,1,c.zip");
    QCOMPARE(f.shown("si"), QStringList{"c.zip"});
    QVERIFY(f.shown("no").isEmpty());
}

void TestLinkGrabber::importAddtolist_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<int>("queued");
    QTest::addColumn<int>("refused");
    QTest::newRow("base without its slash") << "http://h/d" << 0 << 0;
    QTest::newRow("base with its slash") << "http://h/d/" << 0 << 0;
    // One fills the queue; the other two are told about once each.
    QTest::newRow("both lists full") << "http://h/d" << SlotCount - 2 << 2;
}

void TestLinkGrabber::importAddtolist()
{
    QFETCH(QString, url);
    QFETCH(int, queued);
    QFETCH(int, refused);
    ImportFixture f;
    f.settings.maxdescval = 1;
    f.fill(f.inactive, queued);
    f.load("lista," + url.toUtf8() + ",1,a.zip,2,b.zip,3,c.zip,4,d.zip");

    f.click("addtolist");

    // The first runs, the others wait while there is room.
    QVERIFY(!f.window.isVisible());
    QCOMPARE(f.active.rowCount(), 2);
    QCOMPARE(placed(f.active.slotAt(1)), asPlaced("http://h/d/a.zip", f.path("a.zip")));
    QCOMPARE(f.inactive.rowCount(), 1 + queued + 3 - refused);
    QCOMPARE(placed(f.inactive.registro(queued + 1)),
             asPlaced("http://h/d/b.zip", f.path("b.zip")));
    QCOMPARE(f.desktop.callsOf("messageBox"),
             QStringList(refused, "Critical|Se ha alcanzado el límite de descargas"));
}

QTEST_MAIN(TestLinkGrabber)
#include "tst_linkgrabber.moc"
