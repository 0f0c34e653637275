#include "../engine/enginefixture.h"
#include "bigpage.h"
#include "linkgrabberwindow.h"
#include "localservers.h"
#include "scriptedhttpserver.h"

#include <QClipboard>
#include <QDir>
#include <QGuiApplication>
#include <QLabel>
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

// The grabber window over both lists, a fresh program folder and the scripted desktop; controls
// are found by name.
struct GrabberFixture : EngineFixture
{
    LinkGrabberWindow window{active, inactive, settings, desktop, folder};
    LinkGrabber &model = window.model();

    GrabberFixture()
    {
        // The sound and the picture of the error notice.
        QDir(dir.path()).mkdir(QStringLiteral("msg"));
        write(QStringLiteral("msg/ding.wav"), "RIFF");
        write(QStringLiteral("msg/error.gif"), "GIF89a");
    }

    template <typename T> T *child(const QString &name)
    {
        auto *found = window.findChild<T *>(name);
        if (!found)
            qFatal("no control %s", qPrintable(name));
        return found;
    }
    void click(const QString &name) { QTest::mouseClick(child<QPushButton>(name), Qt::LeftButton); }
    QStringList shown(const QString &list)
    {
        return static_cast<QStringListModel *>(child<QListView>(list)->model())->stringList();
    }
    void select(const QString &list, int row)
    {
        auto *view = child<QListView>(list);
        view->setCurrentIndex(view->model()->index(row, 0));
    }
    void open(const QString &clipboard = {})
    {
        QGuiApplication::clipboard()->setText(clipboard);
        window.show();
    }
    // Types the address, presses "Procesar..." and waits for the lists.
    void fetch(const QString &url)
    {
        auto *direcc = child<QLineEdit>("direcc");
        direcc->clear();
        QTest::keyClicks(direcc, url);
        click("obtener");
        QTRY_VERIFY_WITH_TIMEOUT(child<QPushButton>("obtener")->isEnabled(), 30000);
    }
};

// A page served by the scripted server, whatever is asked.
HttpReply page(const QByteArray &body)
{
    return HttpReply::of("HTTP/1.1 200 OK\r\nContent-Type: text/html\r\n\r\n" + body);
}

// A TLS server on 127.0.0.1 with a certificate of its own for that address, made by openssl;
// it records each request and answers it with `reply`.
struct TlsServer
{
    QTemporaryDir dir;
    QSslServer server;
    QSslCertificate certificate;
    QList<QByteArray> requests;
    QByteArray reply;

    bool start()
    {
        const QString key = dir.filePath("key.pem");
        const QString cert = dir.filePath("cert.pem");
        QProcess openssl;
        openssl.start("openssl",
                      {"req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1",
                       "-nodes", "-keyout", key, "-out", cert, "-days", "2", "-subj",
                       "/CN=127.0.0.1", "-addext", "subjectAltName=IP:127.0.0.1"});
        if (!openssl.waitForFinished(30000) || openssl.exitCode() != 0)
            return false;
        QFile certFile(cert);
        QFile keyFile(key);
        if (!certFile.open(QIODevice::ReadOnly) || !keyFile.open(QIODevice::ReadOnly))
            return false;
        certificate = QSslCertificate(&certFile, QSsl::Pem);
        QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
        configuration.setLocalCertificate(certificate);
        configuration.setPrivateKey(QSslKey(&keyFile, QSsl::Ec, QSsl::Pem));
        server.setSslConfiguration(configuration);
        QObject::connect(&server, &QSslServer::pendingConnectionAvailable, &server, [this] {
            while (QTcpSocket *socket = server.nextPendingConnection()) {
                QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] {
                    const QByteArray received = socket->readAll();
                    requests.append(received);
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
    void requestAndSorting();
    void retryOnce_data();
    void retryOnce();
    void options_data();
    void options();
    void savedPages();
    void httpsPage();
    void httpsUntrustedCertificate();
    void bigPageKeepsTheProgramAlive();
    void badAddresses_data();
    void badAddresses();
    void connectionRefused();
    void unterminatedQuote();
    void pageOverTheSizeLimit();
    void pageThatNeverEnds();
    void closingStopsTheFetch();
    void editingTheLists();
    void droppedText();
    void addtolist();
    void addtolistBothListsFull();
};

void TestLinkGrabber::opening_data()
{
    QTest::addColumn<QString>("clipboard");
    QTest::addColumn<QString>("direcc");

    QTest::newRow("http address") << "http://h/p.htm"
                                  << "http://h/p.htm";
    QTest::newRow("https address") << "https://h/p.htm"
                                   << "https://h/p.htm";
    QTest::newRow("upper-case scheme") << "HTTP://h/p.htm"
                                       << "";
    QTest::newRow("ftp address") << "ftp://h/p.htm"
                                 << "";
    QTest::newRow("plain text") << "hola"
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

    QCOMPARE(f.window.objectName(), "listado");
    QCOMPARE(f.window.windowTitle(), "Obtener listado de archivos");
    QCOMPARE(f.child<QLineEdit>("direcc")->text(), direcc);
    QCOMPARE(f.child<QLineEdit>("destdir")->text(), f.dir.path() + QDir::separator());
    QCOMPARE(f.shown("ext"), BuiltInEndings + QStringList({"pdf", ".mp3"}));
    QVERIFY(f.child<QRadioButton>("linkonly")->isChecked());
    QCOMPARE(f.child<QPushButton>("obtener")->text(), "Procesar...");
    QCOMPARE(f.child<QPushButton>("addtolist")->text(), "Agregar a la lista de descargas");
    // Every field has its label.
    QStringList labelled;
    for (const QLabel *label : f.window.findChildren<QLabel *>()) {
        if (label->buddy())
            labelled.append(label->buddy()->objectName() + "=" + label->text().remove('&'));
    }
    labelled.sort();
    QCOMPARE(labelled,
             (QStringList{"destdir=Descargar a la carpeta:", "direcc=Dirección del documento:",
                          "ext=Añadir ficheros de extensión:", "no=No descargar", "si=Descargar"}));
}

void TestLinkGrabber::requestAndSorting()
{
    GrabberFixture f;
    ScriptedHttpServer server([](const QByteArray &, int) {
        return page("<html><a href=\"a.zip\">a</a> <a href='b.htm'>b</a> <a href=c.exe>c</a>"
                    "<img src=\"i.gif\"></html>");
    });
    f.open();

    f.fetch(server.url("dir/p.htm"));

    QCOMPARE(server.requests(), QList<QByteArray>{"GET /dir/p.htm HTTP/1.1\r\n"
                                                  "Host: 127.0.0.1\r\n"
                                                  "Connection: close\r\n\r\n"});
    const QString base = server.url("dir/");
    QCOMPARE(f.shown("si"), (QStringList{base + "a.zip", base + "c.exe"}));
    // Single quotes were turned into double quotes as the page arrived.
    QCOMPARE(f.shown("no"), QStringList{base + "b.htm"});
    QCOMPARE(f.window.windowTitle(), "3 direcciones encontradas");
    QVERIFY(f.child<QLineEdit>("direcc")->isEnabled());
}

void TestLinkGrabber::retryOnce_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("second");
    QTest::addColumn<QStringList>("asked");
    QTest::addColumn<QString>("caption");

    const QByteArray none = "<html>nada</html>";
    QTest::newRow("folder without slash, found as a folder")
        << "dir" << QByteArray("<a href=\"x.zip\">") << QStringList{"/dir", "/dir/"}
        << "1 direcciones encontradas";
    QTest::newRow("folder without slash, nothing either way")
        << "dir" << none << QStringList{"/dir", "/dir/"} << "No se han encontrado resultados";
    QTest::newRow("page with an extension")
        << "dir/p.htm" << none << QStringList{"/dir/p.htm"} << "No se han encontrado resultados";
    QTest::newRow("folder with its slash")
        << "dir/" << none << QStringList{"/dir/"} << "No se han encontrado resultados";
}

void TestLinkGrabber::retryOnce()
{
    QFETCH(QString, path);
    QFETCH(QByteArray, second);
    QFETCH(QStringList, asked);
    QFETCH(QString, caption);
    GrabberFixture f;
    ScriptedHttpServer server(
        [&](const QByteArray &, int index) { return page(index == 0 ? "<html></html>" : second); });
    f.open();

    f.fetch(server.url(path));

    QStringList paths;
    for (const QByteArray &request : server.requests())
        paths.append(QString::fromLatin1(request.split(' ').value(1)));
    QCOMPARE(paths, asked);
    QCOMPARE(f.window.windowTitle(), caption);
}

void TestLinkGrabber::options_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<QStringList>("found");

    QTest::newRow("links") << "linkonly" << QStringList{"a.zip", "b.zip"};
    QTest::newRow("images") << "imgonly" << QStringList{"i.gif"};
    QTest::newRow("links, then images") << "linkimg" << QStringList{"a.zip", "b.zip", "i.gif"};
}

void TestLinkGrabber::options()
{
    QFETCH(QString, option);
    QFETCH(QStringList, found);
    GrabberFixture f;
    ScriptedHttpServer server([](const QByteArray &, int) {
        return page("<a href=\"a.zip\"><img src=\"i.gif\"><a href=\"b.zip\">");
    });
    f.open();
    f.child<QRadioButton>(option)->click();

    f.fetch(server.url("p.htm"));

    for (QString &name : found)
        name.prepend(server.url(QString()));
    QCOMPARE(f.shown("si"), found);
}

void TestLinkGrabber::savedPages()
{
    // setup: saved pages in a folder that nginx serves
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

    // action: the folder without its slash; nginx answers it with a redirect, which holds no
    // links, so the folder is asked for once more
    f.fetch(nginx.url("pages"));

    const QString base = nginx.url("pages/");
    QCOMPARE(f.child<QLineEdit>("direcc")->text(), base);
    QCOMPARE(f.shown("si"),
             (QStringList{base + "double.zip", base + "single.zip", base + "unquoted.zip",
                          base + "sub/relative.exe", base + "rooted/file.zip", nginx.url("up.zip"),
                          base + "HTTP://EXAMPLE.ORG/upper.zip", base + "double.zip",
                          base + "pic.gif"}));
    QCOMPARE(f.shown("no"), (QStringList{"http://example.org/abs.html", base + "photo.png"}));
    QCOMPARE(f.window.windowTitle(), "11 direcciones encontradas");
}

void TestLinkGrabber::httpsPage()
{
    TlsServer tls;
    QVERIFY(tls.start());
    tls.reply = "HTTP/1.1 200 OK\r\n\r\n<a href=\"a.zip\"> <a href='/b.zip'>";
    // The system's authorities, and this test's own.
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

void TestLinkGrabber::httpsUntrustedCertificate()
{
    TlsServer tls;
    QVERIFY(tls.start());
    tls.reply = "HTTP/1.1 200 OK\r\n\r\n<a href=\"a.zip\">";
    GrabberFixture f;
    f.open();

    f.fetch(tls.url("p.htm"));

    QVERIFY(tls.requests.isEmpty());
    QVERIFY(f.shown("si").isEmpty());
    QCOMPARE(f.desktop.callsOf("playSound"), QStringList{f.folder.file("msg/ding.wav")});
    QCOMPARE(f.desktop.callsOf("showMessageWindow").size(), 1);
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
    ticker.setInterval(0);
    QObject::connect(&ticker, &QTimer::timeout, &f.window, [&] {
        if (f.model.scanning() && seenWhileScanning == 0)
            seenWhileScanning = f.model.si().size() + f.model.no().size();
    });
    ticker.start();

    f.fetch(nginx.url("big.html"));

    QCOMPARE(f.model.si().size() + f.model.no().size(), 20000);
    QVERIFY(seenWhileScanning > 0 && seenWhileScanning < 20000);
    QCOMPARE(f.shown("si").size(), f.model.si().size());
    QCOMPARE(f.window.windowTitle(), "20000 direcciones encontradas");
    QCOMPARE(f.model.si().first(), nginx.url("files/f0.zip"));
    QCOMPARE(f.model.no().first(), nginx.url("docs/f2.txt"));
}

void TestLinkGrabber::badAddresses_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("message");

    QTest::newRow("no scheme") << "www.example.org/p.htm"
                               << "Dirección incorrecta.";
    QTest::newRow("port without a slash after it")
        << "http://127.0.0.1:8080"
        << "El puerto de la dirección no va seguido de \"/\"";
}

void TestLinkGrabber::badAddresses()
{
    QFETCH(QString, url);
    QFETCH(QString, message);
    GrabberFixture f;
    f.open();

    f.fetch(url);

    QCOMPARE(f.desktop.callsOf("messageBox"), QStringList{"Critical|" + message});
    QVERIFY(f.child<QLineEdit>("direcc")->isEnabled());
}

void TestLinkGrabber::connectionRefused()
{
    quint16 closedPort = 0;
    {
        QTcpServer probe;
        probe.listen(QHostAddress::LocalHost, 0);
        closedPort = probe.serverPort();
    }
    GrabberFixture f;
    f.open();

    f.fetch(QStringLiteral("http://127.0.0.1:%1/p.htm").arg(closedPort));

    QCOMPARE(f.desktop.callsOf("playSound"), QStringList{f.folder.file("msg/ding.wav")});
    const QStringList notices = f.desktop.callsOf("showMessageWindow");
    QCOMPARE(notices.size(), 1);
    QVERIFY(notices.first().endsWith("|" + f.folder.file("msg/error.gif")));
    // The address can be corrected and fetched again.
    QVERIFY(f.child<QLineEdit>("direcc")->isEnabled());
}

void TestLinkGrabber::unterminatedQuote()
{
    GrabberFixture f;
    ScriptedHttpServer server([](const QByteArray &, int) {
        return page("<a href=\"a.zip\"> <a href=\"b.zip> never closed");
    });
    f.open();

    f.fetch(server.url("p.htm"));

    QCOMPARE(f.shown("si"), QStringList{server.url("a.zip")});
    const QStringList messages = f.desktop.callsOf("messageBox");
    QCOMPARE(messages.size(), 1);
    QVERIFY(messages.first().startsWith("Critical|La dirección que empieza en el carácter "));
    QCOMPARE(f.window.windowTitle(), "1 direcciones encontradas");
}

void TestLinkGrabber::pageOverTheSizeLimit()
{
    // A 100 MB file of binary data with one link before it.
    QTemporaryDir root;
    QFile file(root.filePath("huge.bin"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("x<a href=\"first.zip\">" + randomBytes(1024 * 1024));
    QVERIFY(file.resize(100 * 1024 * 1024));
    file.close();
    NginxServer nginx(root.path());
    QVERIFY2(nginx.start(), qPrintable(nginx.error()));
    GrabberFixture f;
    f.open();

    f.fetch(nginx.url("huge.bin"));

    QCOMPARE(f.desktop.callsOf("messageBox"),
             QStringList{"Exclamation|La página pasa de 16 Mb: solo se buscan direcciones en lo "
                         "recibido hasta ahora."});
    QCOMPARE(f.shown("si"), QStringList{nginx.url("first.zip")});
    QVERIFY(f.model.fetch().text().size() < 20 * 1024 * 1024);
}

void TestLinkGrabber::pageThatNeverEnds()
{
    GrabberFixture f;
    ScriptedHttpServer server([](const QByteArray &, int) {
        HttpReply reply = page("<a href=\"a.zip\"> and then nothing more");
        reply.stall = true;
        return reply;
    });
    f.open();
    QTest::keyClicks(f.child<QLineEdit>("direcc"), server.url("p.htm"));
    f.click("obtener");
    QTRY_VERIFY(f.model.fetch().text().contains("nothing more"));

    f.model.fetch().timeLimitReached();

    QCOMPARE(f.desktop.callsOf("messageBox"),
             QStringList{"Exclamation|La página no ha terminado de llegar en 120 segundos: solo "
                         "se buscan direcciones en lo recibido hasta ahora."});
    QCOMPARE(f.shown("si"), QStringList{server.url("a.zip")});
    QVERIFY(f.child<QPushButton>("obtener")->isEnabled());
}

void TestLinkGrabber::closingStopsTheFetch()
{
    GrabberFixture f;
    ScriptedHttpServer server([](const QByteArray &, int) {
        HttpReply reply = page("<a href=\"a.zip\">");
        reply.stall = true;
        return reply;
    });
    f.open();
    QTest::keyClicks(f.child<QLineEdit>("direcc"), server.url("p.htm"));
    f.click("obtener");
    QTRY_COMPARE(server.requests().size(), 1);

    f.window.close();
    QVERIFY(!f.model.fetch().running());
    f.open(QStringLiteral("http://otra/"));

    QCOMPARE(f.child<QLineEdit>("direcc")->text(), "http://otra/");
    QVERIFY(f.child<QPushButton>("obtener")->isEnabled());
    QVERIFY(f.shown("si").isEmpty());
}

void TestLinkGrabber::editingTheLists()
{
    GrabberFixture f;
    ScriptedHttpServer server(
        [](const QByteArray &, int) { return page("<a href=\"a.zip\"><a href=\"b.htm\">"); });
    f.open();
    f.fetch(server.url("p.htm"));
    const QString a = server.url("a.zip");
    const QString b = server.url("b.htm");

    // Moving: nothing selected moves nothing.
    f.click("tosi");
    QCOMPARE(f.shown("si"), QStringList{a});
    f.select("no", 0);
    f.click("tosi");
    QCOMPARE(f.shown("si"), (QStringList{a, b}));
    QVERIFY(f.shown("no").isEmpty());
    f.select("si", 0);
    f.click("tono");
    QCOMPARE(f.shown("si"), QStringList{b});
    QCOMPARE(f.shown("no"), QStringList{a});

    // Endings: an answer is added as typed, an empty one or a cancel adds nothing.
    f.desktop.inputAnswers = {QString(".mp3"), QString(), std::nullopt};
    f.click("adext");
    f.click("adext");
    f.click("adext");
    QCOMPARE(f.desktop.callsOf("inputBox").first(),
             "Escriba la extensión del archivo (exe, zip, gif) con o sin puntos.|");
    QCOMPARE(f.shown("ext"), BuiltInEndings + QStringList{".mp3"});
    f.select("ext", 0);
    f.click("delext");
    QCOMPARE(f.shown("ext"), BuiltInEndings.mid(1) + QStringList{".mp3"});

    // The destination folder from the chooser; a cancelled choice changes nothing.
    f.desktop.fileAnswers = {"/srv/bajadas", ""};
    f.click("brdir");
    f.click("brdir");
    QCOMPARE(f.child<QLineEdit>("destdir")->text(), "/srv/bajadas");
}

void TestLinkGrabber::droppedText()
{
    GrabberFixture f;
    f.open(QStringLiteral("http://antes/p.htm"));
    auto *direcc = f.child<QLineEdit>("direcc");
    QMimeData data;
    data.setText("http://dejada/q.htm");

    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    // Only a drag under way delivers a drop to a field: the drop is handed over as it would be.
    static_cast<QObject &>(f.window).eventFilter(direcc, &drop);

    QCOMPARE(direcc->text(), "http://dejada/q.htm");
    QCOMPARE(f.model.direcc(), "http://dejada/q.htm");
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

    // Three run, the fourth waits.
    QVERIFY(!f.window.isVisible());
    QCOMPARE(f.active.rowCount(), 4);
    const QString folder = f.dir.path() + QDir::separator();
    for (int i = 1; i <= 3; ++i) {
        const DownloadSlot &slot = f.active.slotAt(i);
        QCOMPARE(slot.Data, server.url(QString::number(i) + ".zip"));
        QCOMPARE(slot.path, folder + QString::number(i) + ".zip");
        QVERIFY(slot.allowredo);
        QCOMPARE(slot.usernm, "anonymous");
        QCOMPARE(slot.passw, "freepwd");
        QVERIFY(!slot.rememb);
    }
    QCOMPARE(f.inactive.rowCount(), 2);
    const ListRecord &queued = f.inactive.registro(1);
    QCOMPARE(queued.Data, server.url("d/my%20file.zip"));
    QCOMPARE(queued.path, folder + "my file.zip");
    QVERIFY(queued.allowredo);
    QCOMPARE(queued.usernm, "anonymous");
    QVERIFY(!queued.locked);
    QCOMPARE(f.read("listado.lst"), (BuiltInEndings + QStringList{"pdf"}).join("\r\n") + "\r\n");

    // The next opening shows the saved endings after the built-in ones.
    f.open();
    QCOMPARE(f.shown("ext"), BuiltInEndings + BuiltInEndings + QStringList{"pdf"});
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

    QCOMPARE(f.active.rowCount(), 2);
    QCOMPARE(f.desktop.callsOf("messageBox"),
             QStringList{"Critical|Se ha alcanzado el máximo de descargas en cola."});
    QVERIFY(!f.window.isVisible());
}

QTEST_MAIN(TestLinkGrabber)
#include "tst_linkgrabber.moc"
