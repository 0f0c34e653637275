#include "../engine/enginefixture.h"
#include "bigpage.h"
#include "linkgrabberwindow.h"
#include "localservers.h"
#include "scriptedhttpserver.h"

#include <QClipboard>
#include <QDir>
#include <QGuiApplication>
#include <QLineEdit>
#include <QListView>
#include <QMimeData>
#include <QProcess>
#include <QPushButton>
#include <QRadioButton>
#include <QSslKey>
#include <QSslServer>
#include <QStringListModel>
#include <QTest>
#include <QTimer>

namespace {

const QStringList BuiltInEndings = {"exe", "zip", "ace", "tar", "iso", "bmp", "gif", "jpg"};

// The grabber window over both lists, a fresh program folder (with the sound and the picture of
// the error notice) and the scripted desktop; controls are found by name.
struct GrabberFixture : EngineFixture
{
    LinkGrabberWindow window{active, inactive, settings, desktop, folder};
    LinkGrabber &model = window.model();

    GrabberFixture()
    {
        QDir(dir.path()).mkdir("msg");
        write("msg/ding.wav", "RIFF");
        write("msg/error.gif", "GIF89a");
    }
    template <typename T> T *child(const QString &name) { return window.findChild<T *>(name); }
    void click(const QString &name) { QTest::mouseClick(child<QPushButton>(name), Qt::LeftButton); }
    QStringList shown(const QString &list)
    {
        return static_cast<QStringListModel *>(child<QListView>(list)->model())->stringList();
    }
    void select(const QString &list, int row)
    {
        child<QListView>(list)->setCurrentIndex(child<QListView>(list)->model()->index(row, 0));
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

HttpReply page(const QByteArray &body, bool stall = false)
{
    HttpReply reply = HttpReply::of("HTTP/1.1 200 OK\r\n\r\n" + body);
    reply.stall = stall;
    return reply;
}

// A TLS server on 127.0.0.1 with a certificate of its own made by openssl; it records each
// request and answers it with `reply`.
struct TlsServer
{
    QTemporaryDir dir;
    QSslServer server;
    QSslCertificate certificate;
    QList<QByteArray> requests;
    QByteArray reply;

    bool start()
    {
        QProcess openssl;
        openssl.start("openssl",
                      {"req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1",
                       "-nodes", "-keyout", dir.filePath("key"), "-out", dir.filePath("cert"),
                       "-days", "2", "-subj", "/CN=127.0.0.1", "-addext",
                       "subjectAltName=IP:127.0.0.1"});
        QFile cert(dir.filePath("cert"));
        QFile key(dir.filePath("key"));
        if (!openssl.waitForFinished(30000) || !cert.open(QIODevice::ReadOnly) ||
            !key.open(QIODevice::ReadOnly))
            return false;
        certificate = QSslCertificate(&cert);
        QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
        configuration.setLocalCertificate(certificate);
        configuration.setPrivateKey(QSslKey(&key, QSsl::Ec));
        server.setSslConfiguration(configuration);
        QObject::connect(&server, &QSslServer::pendingConnectionAvailable, &server, [this] {
            while (QTcpSocket *socket = server.nextPendingConnection()) {
                QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] {
                    requests.append(socket->readAll());
                    socket->write(reply);
                    socket->disconnectFromHost();
                });
            }
        });
        return server.listen(QHostAddress::LocalHost, 0);
    }
    QString url(const QString &path) const
    {
        return QStringLiteral("https://127.0.0.1:%1/%2").arg(server.serverPort()).arg(path);
    }
};

} // namespace

class TestLinkGrabber : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void opening_data();
    void opening();
    void fetchAndSort_data();
    void fetchAndSort();
    void noResults_data();
    void noResults();
    void savedPages();
    void bigPageKeepsTheProgramAlive();
    void https();
    void failures_data();
    void failures();
    void unterminatedQuote();
    void limits_data();
    void limits();
    void closingStopsTheFetch();
    void editing();
    void addtolist();
    void addtolistBothListsFull();
};

void TestLinkGrabber::opening_data()
{
    QTest::addColumn<QString>("clipboard");
    QTest::addColumn<QString>("direcc");

    QTest::newRow("http") << "http://h/p.htm"
                          << "http://h/p.htm";
    QTest::newRow("https") << "https://h/p.htm"
                           << "https://h/p.htm";
    QTest::newRow("upper-case scheme") << "HTTP://h/p.htm"
                                       << "";
}

void TestLinkGrabber::opening()
{
    QFETCH(QString, clipboard);
    QFETCH(QString, direcc);
    GrabberFixture f;
    f.write("listado.lst", "pdf\r\n.mp3\r\n");
    f.settings.defdir = f.dir.path();

    f.open(clipboard);

    QCOMPARE(f.window.windowTitle(), "Obtener listado de archivos");
    QCOMPARE(f.child<QLineEdit>("direcc")->text(), direcc);
    QCOMPARE(f.child<QLineEdit>("destdir")->text(), f.dir.path() + QDir::separator());
    QCOMPARE(f.shown("ext"), BuiltInEndings + QStringList({"pdf", ".mp3"}));
    QVERIFY(f.child<QRadioButton>("linkonly")->isChecked());
}

void TestLinkGrabber::fetchAndSort_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<QStringList>("si");
    QTest::addColumn<QStringList>("no");

    // The page is <a href="a.zip"><img src='i.gif'><a href='b.htm'><a href=c.exe>: single quotes
    // count once they are made double on arrival.
    QTest::newRow("links") << "linkonly" << QStringList{"a.zip", "c.exe"} << QStringList{"b.htm"};
    QTest::newRow("images") << "imgonly" << QStringList{"i.gif"} << QStringList{};
    QTest::newRow("links, then images")
        << "linkimg" << QStringList{"a.zip", "c.exe", "i.gif"} << QStringList{"b.htm"};
}

void TestLinkGrabber::fetchAndSort()
{
    QFETCH(QString, option);
    QFETCH(QStringList, si);
    QFETCH(QStringList, no);
    GrabberFixture f;
    ScriptedHttpServer server([](const QByteArray &, int) {
        return page("<a href=\"a.zip\"><img src='i.gif'><a href='b.htm'><a href=c.exe>");
    });
    f.open();
    f.child<QRadioButton>(option)->click();

    f.fetch(server.url("dir/p.htm"));

    QCOMPARE(server.requests(), QList<QByteArray>{"GET /dir/p.htm HTTP/1.1\r\n"
                                                  "Host: 127.0.0.1\r\n"
                                                  "Connection: close\r\n\r\n"});
    for (QStringList *list : {&si, &no}) {
        for (QString &name : *list)
            name.prepend(server.url("dir/"));
    }
    QCOMPARE(f.shown("si"), si);
    QCOMPARE(f.shown("no"), no);
    QCOMPARE(f.window.windowTitle(),
             QString::number(si.size() + no.size()) + " direcciones encontradas");
    QVERIFY(f.child<QLineEdit>("direcc")->isEnabled());
}

void TestLinkGrabber::noResults_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QStringList>("asked");

    // An address that may name a folder is tried once more with a slash.
    QTest::newRow("folder without its slash") << "dir" << QStringList{"/dir", "/dir/"};
    QTest::newRow("page with an extension") << "dir/p.htm" << QStringList{"/dir/p.htm"};
}

void TestLinkGrabber::noResults()
{
    QFETCH(QString, path);
    QFETCH(QStringList, asked);
    GrabberFixture f;
    ScriptedHttpServer server([](const QByteArray &, int) { return page("<p>nada</p>"); });
    f.open();

    f.fetch(server.url(path));

    QStringList paths;
    for (const QByteArray &request : server.requests())
        paths.append(QString::fromLatin1(request.split(' ').value(1)));
    QCOMPARE(paths, asked);
    QCOMPARE(f.window.windowTitle(), "No se han encontrado resultados");
}

void TestLinkGrabber::savedPages()
{
    QTemporaryDir root;
    QDir(root.path()).mkdir("pages");
    QFile index(root.filePath("pages/index.html"));
    QVERIFY(index.open(QIODevice::WriteOnly));
    index.write(
        "<html><body>\n"
        "<a href=\"double.zip\">1</a> <a href='single.zip'>2</a> <a href=unquoted.zip>3</a>\n"
        "<a href=\"sub/relative.exe\">4</a> <a href=\"/rooted/file.zip\">5</a>\n"
        "<a href=\"../up.zip\">6</a> <a href=\"HTTP://EXAMPLE.ORG/upper.zip\">7</a>\n"
        "<a href=\"http://example.org/abs.html\">8</a> <a href=\"double.zip\">9</a>\n"
        "<img src=\"pic.gif\"> <img src='photo.png'>\n"
        "</body></html>\n");
    index.close();
    NginxServer nginx(root.path());
    QVERIFY2(nginx.start(), qPrintable(nginx.error()));
    GrabberFixture f;
    f.open();
    f.child<QRadioButton>("linkimg")->click();

    // The folder without its slash: nginx redirects, the redirect holds no links, so the folder
    // is asked for once more with the slash.
    f.fetch(nginx.url("pages"));

    const QString base = nginx.url("pages/");
    QCOMPARE(f.child<QLineEdit>("direcc")->text(), base);
    QCOMPARE(f.shown("si"),
             (QStringList{base + "double.zip", base + "single.zip", base + "unquoted.zip",
                          base + "sub/relative.exe", base + "rooted/file.zip", nginx.url("up.zip"),
                          base + "HTTP://EXAMPLE.ORG/upper.zip", base + "double.zip",
                          base + "pic.gif"}));
    QCOMPARE(f.shown("no"), (QStringList{"http://example.org/abs.html", base + "photo.png"}));
}

void TestLinkGrabber::bigPageKeepsTheProgramAlive()
{
    QTemporaryDir root;
    QFile file(root.filePath("big.html"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bigPage(20000, 5 * 1024 * 1024));
    file.close();
    NginxServer nginx(root.path());
    QVERIFY2(nginx.start(), qPrintable(nginx.error()));
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

    f.fetch(nginx.url("big.html"));

    QVERIFY(seenWhileScanning > 0 && seenWhileScanning < 20000);
    QCOMPARE(f.shown("si").size() + f.shown("no").size(), 20000);
    QCOMPARE(f.window.windowTitle(), "20000 direcciones encontradas");
    QCOMPARE(f.shown("no").first(), nginx.url("docs/f2.txt"));
}

void TestLinkGrabber::https()
{
    TlsServer tls;
    QVERIFY(tls.start());
    tls.reply = "HTTP/1.1 200 OK\r\n\r\n<a href=\"a.zip\"> <a href='/b.zip'>";
    GrabberFixture untrusting;
    untrusting.open();
    untrusting.fetch(tls.url("p.htm"));

    // A certificate no authority of the system vouches for is an error like any other.
    QVERIFY(tls.requests.isEmpty());
    QCOMPARE(untrusting.desktop.callsOf("playSound").size(), 1);
    QCOMPARE(untrusting.desktop.callsOf("showMessageWindow").size(), 1);

    const QSslConfiguration system = QSslConfiguration::defaultConfiguration();
    QSslConfiguration trusting = system;
    trusting.addCaCertificate(tls.certificate);
    QSslConfiguration::setDefaultConfiguration(trusting);
    auto restore = qScopeGuard([&] { QSslConfiguration::setDefaultConfiguration(system); });
    GrabberFixture f;
    f.open();
    f.fetch(tls.url("dir/p.htm"));

    QCOMPARE(tls.requests, QList<QByteArray>{"GET /dir/p.htm HTTP/1.1\r\n"
                                             "Host: 127.0.0.1\r\n"
                                             "Connection: close\r\n\r\n"});
    QCOMPARE(f.shown("si"), (QStringList{tls.url("dir/a.zip"), tls.url("dir/b.zip")}));
}

void TestLinkGrabber::failures_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QStringList>("calls");

    quint16 closed = 0;
    {
        QTcpServer probe;
        probe.listen(QHostAddress::LocalHost, 0);
        closed = probe.serverPort();
    }
    QTest::newRow("no scheme") << "www.example.org/p.htm"
                               << QStringList{"messageBox|Critical|Dirección incorrecta."};
    QTest::newRow("port without a slash after it")
        << "http://127.0.0.1:8080"
        << QStringList{"messageBox|Critical|El puerto de la dirección no va seguido de \"/\""};
    // The notice carries the system's description of the error.
    QTest::newRow("connection refused")
        << QStringLiteral("http://127.0.0.1:%1/p.htm").arg(closed)
        << QStringList{"playSound|msg/ding.wav", "showMessageWindow|"};
}

void TestLinkGrabber::failures()
{
    QFETCH(QString, url);
    QFETCH(QStringList, calls);
    GrabberFixture f;
    f.open();

    f.fetch(url);

    QCOMPARE(f.desktop.calls.size(), calls.size());
    for (qsizetype i = 0; i < calls.size(); ++i) {
        const QString expected = calls[i].replace("msg/", f.folder.file("msg/"));
        QVERIFY2(f.desktop.calls[i].startsWith(expected), qPrintable(f.desktop.calls[i]));
    }
    if (calls.last().startsWith("showMessageWindow"))
        QVERIFY(f.desktop.calls.last().endsWith(f.folder.file("msg/error.gif")));
    // The address can be corrected and fetched again.
    QVERIFY(f.child<QLineEdit>("direcc")->isEnabled());
    QVERIFY(f.child<QPushButton>("obtener")->isEnabled());
}

void TestLinkGrabber::unterminatedQuote()
{
    GrabberFixture f;
    ScriptedHttpServer server(
        [](const QByteArray &, int) { return page("<a href=\"a.zip\"> <a href=\"b.zip> ..."); });
    f.open();

    f.fetch(server.url("p.htm"));

    QCOMPARE(f.shown("si"), QStringList{server.url("a.zip")});
    const QStringList messages = f.desktop.callsOf("messageBox");
    QCOMPARE(messages.size(), 1);
    QVERIFY(messages.first().startsWith("Critical|La dirección que empieza en el carácter "));
}

void TestLinkGrabber::limits_data()
{
    QTest::addColumn<bool>("endless");
    QTest::addColumn<QString>("message");

    QTest::newRow("100 MB page") << false
                                 << "La página pasa de 16 Mb: solo se buscan direcciones en lo "
                                    "recibido hasta ahora.";
    QTest::newRow("page that never ends")
        << true
        << "La página no ha terminado de llegar en 120 segundos: solo se buscan direcciones en lo "
           "recibido hasta ahora.";
}

void TestLinkGrabber::limits()
{
    QFETCH(bool, endless);
    QFETCH(QString, message);
    // 100 MB of binary data from nginx, or a scripted server that stops sending, after a link.
    QTemporaryDir root;
    QFile file(root.filePath("page.bin"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("x<a href=\"first.zip\">" + randomBytes(1024 * 1024));
    QVERIFY(file.resize(endless ? 0 : 100 * 1024 * 1024));
    file.close();
    NginxServer nginx(root.path());
    ScriptedHttpServer stalling(
        [](const QByteArray &, int) { return page("x<a href=\"first.zip\"> ...", true); });
    GrabberFixture f;
    f.open();

    if (endless) {
        f.fetch(stalling.url("page.bin"), false);
        QTRY_VERIFY(f.model.fetch().text().contains("..."));
        f.model.fetch().timeLimitReached();
    } else {
        QVERIFY2(nginx.start(), qPrintable(nginx.error()));
        f.fetch(nginx.url("page.bin"));
    }

    QCOMPARE(f.desktop.callsOf("messageBox"), QStringList{"Exclamation|" + message});
    QCOMPARE(f.shown("si").size(), 1);
    QVERIFY(f.shown("si").first().endsWith("/first.zip"));
    QVERIFY(f.model.fetch().text().size() < 20 * 1024 * 1024);
    QVERIFY(f.child<QPushButton>("obtener")->isEnabled());
}

void TestLinkGrabber::closingStopsTheFetch()
{
    GrabberFixture f;
    ScriptedHttpServer server([](const QByteArray &, int) { return page("<a href=\"a\">", true); });
    f.open();
    f.fetch(server.url("p.htm"), false);
    QTRY_COMPARE(server.requests().size(), 1);

    f.window.close();
    QVERIFY(!f.model.fetch().running());
    f.open("http://otra/");

    QCOMPARE(f.child<QLineEdit>("direcc")->text(), "http://otra/");
    QVERIFY(f.child<QPushButton>("obtener")->isEnabled());
    QVERIFY(f.shown("si").isEmpty());
}

void TestLinkGrabber::editing()
{
    GrabberFixture f;
    ScriptedHttpServer server(
        [](const QByteArray &, int) { return page("<a href=\"a.zip\"><a href=\"b.htm\">"); });
    f.open();
    f.fetch(server.url("p.htm"));
    const QString a = server.url("a.zip");
    const QString b = server.url("b.htm");

    f.click("tosi"); // nothing selected
    f.select("no", 0);
    f.click("tosi");
    QCOMPARE(f.shown("si"), (QStringList{a, b}));
    QVERIFY(f.shown("no").isEmpty());
    f.select("si", 0);
    f.click("tono");
    QCOMPARE(f.shown("si"), QStringList{b});
    QCOMPARE(f.shown("no"), QStringList{a});

    // An ending is added as typed; an empty answer or a cancel adds nothing.
    f.desktop.inputAnswers = {QString(".mp3"), QString(), std::nullopt};
    for (int i = 0; i < 3; ++i)
        f.click("adext");
    QCOMPARE(f.desktop.callsOf("inputBox").first(),
             "Escriba la extensión del archivo (exe, zip, gif) con o sin puntos.|");
    f.select("ext", 0);
    f.click("delext");
    QCOMPARE(f.shown("ext"), BuiltInEndings.mid(1) + QStringList{".mp3"});

    // A dropped text replaces the address. Only a drag under way hands a drop to a field, so
    // the drop is handed over here as the drag would.
    QMimeData data;
    data.setText("http://dejada/q.htm");
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    static_cast<QObject &>(f.window).eventFilter(f.child<QLineEdit>("direcc"), &drop);
    QCOMPARE(f.child<QLineEdit>("direcc")->text(), "http://dejada/q.htm");
}

void TestLinkGrabber::addtolist()
{
    GrabberFixture f;
    f.settings.maxdescval = 3;
    ScriptedHttpServer server([](const QByteArray &request, int) {
        return request.contains("p.htm") ? page("<a href=\"1.zip\"><a href=\"2.zip\">"
                                                "<a href=\"3.zip\"><a href=\"d/my%20file.zip\">")
                                         : HttpReply::of("HTTP/1.1 404 Not Found\r\n\r\n");
    });
    f.open();
    f.desktop.inputAnswers = {QString("pdf")};
    f.click("adext");
    f.fetch(server.url("p.htm"));
    f.desktop.fileAnswers = {f.dir.path()};
    f.click("brdir");

    f.click("addtolist");

    // Three run, the fourth waits; each in the chosen folder, with one separator.
    QVERIFY(!f.window.isVisible());
    QCOMPARE(f.active.rowCount(), 4);
    const QString folder = f.dir.path() + QDir::separator();
    for (int i = 1; i <= 3; ++i) {
        const DownloadSlot &slot = f.active.slotAt(i);
        QCOMPARE(slot.Data, server.url(QString::number(i) + ".zip"));
        QCOMPARE(slot.path, folder + QString::number(i) + ".zip");
        QVERIFY(slot.allowredo && !slot.rememb);
        QCOMPARE(slot.usernm + "/" + slot.passw, "anonymous/freepwd");
    }
    QCOMPARE(f.inactive.rowCount(), 2);
    const ListRecord &queued = f.inactive.registro(1);
    QCOMPARE(queued.Data, server.url("d/my%20file.zip"));
    QCOMPARE(queued.path, folder + "my file.zip");
    QVERIFY(queued.allowredo && !queued.locked);
    QCOMPARE(queued.usernm + "/" + queued.passw, "anonymous/freepwd");
    QCOMPARE(f.read("listado.lst"), (BuiltInEndings + QStringList{"pdf"}).join("\r\n") + "\r\n");

    // The next opening shows the saved endings after the built-in ones, which are not repeated.
    f.open();
    QCOMPARE(f.shown("ext"), BuiltInEndings + QStringList{"pdf"});
}

void TestLinkGrabber::addtolistBothListsFull()
{
    GrabberFixture f;
    f.settings.maxdescval = 1;
    for (int i = 0; i < SlotCount - 1; ++i)
        f.inactive.addnew("http://h/q.zip", "/tmp/q.zip", 0, 0, true, 0, true, "", "", false,
                          false);
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

QTEST_MAIN(TestLinkGrabber)
#include "tst_linkgrabber.moc"
