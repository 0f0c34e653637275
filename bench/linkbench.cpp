// Times the link grabber on a page of 5 MB with 20 000 links (bench/README.md): turning the
// arriving bytes into text, the extraction alone, and the whole grabber, from "Procesar..." to
// the sorted lists, without and with its window.
#include "activelist.h"
#include "bigpage.h"
#include "fakedesktop.h"
#include "inactivelist.h"
#include "linkextraction.h"
#include "linkgrabberwindow.h"
#include "recordinghistory.h"
#include "settings.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QStringDecoder>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>

namespace {

constexpr int Links = 20000;
constexpr qsizetype PageSize = 5 * 1024 * 1024;
constexpr int Rounds = 7;

// Milliseconds of each round of `work`, printed as the median and the range.
template <typename Work> void measure(const char *what, Work work)
{
    QList<double> times;
    for (int round = 0; round < Rounds; ++round) {
        QElapsedTimer timer;
        timer.start();
        work();
        times.append(double(timer.nsecsElapsed()) / 1e6);
    }
    std::sort(times.begin(), times.end());
    std::printf("%-52s median %7.1f ms  (%.1f-%.1f)\n", what, times[Rounds / 2], times.first(),
                times.last());
}

// The page in 64 KiB pieces, as a socket hands it over, with single quotes made double.
QString arrived(const QByteArray &page)
{
    QStringDecoder decoder(QStringDecoder::Utf8);
    QString text;
    for (qsizetype at = 0; at < page.size(); at += 65536) {
        QString piece =
            decoder(QByteArrayView(page).sliced(at, std::min<qsizetype>(65536, page.size() - at)));
        piece.replace(QLatin1Char('\''), QLatin1Char('"'));
        text += piece;
    }
    return text;
}

// Serves the page on 127.0.0.1 to every connection, then closes it.
class PageServer : public QTcpServer
{
public:
    explicit PageServer(QByteArray page) : m_reply("HTTP/1.1 200 OK\r\n\r\n" + page)
    {
        listen(QHostAddress::LocalHost, 0);
        connect(this, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket *socket = nextPendingConnection()) {
                connect(socket, &QTcpSocket::readyRead, socket, [this, socket] {
                    socket->readAll();
                    socket->write(m_reply);
                    socket->disconnectFromHost();
                });
                connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
            }
        });
    }

private:
    QByteArray m_reply;
};

// One fetch by the grabber, until its lists are complete.
void grab(LinkGrabber &grabber, const QString &url)
{
    grabber.setDirecc(url);
    grabber.obtener();
    while (!grabber.obtenerEnabled())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    if (grabber.si().size() + grabber.no().size() != Links)
        qFatal("%lld addresses found", qlonglong(grabber.si().size() + grabber.no().size()));
}

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM",
            qgetenv("QT_QPA_PLATFORM").isEmpty() ? "offscreen" : qgetenv("QT_QPA_PLATFORM"));
    QApplication app(argc, argv);
    const QByteArray page = bigPage(Links, PageSize);
    std::printf("page: %lld bytes, %d links, %d rounds\n", qlonglong(page.size()), Links, Rounds);

    QString text;
    measure("bytes to text (decode, quotes)", [&] { text = arrived(page); });
    measure("extraction (scan, complete, \"..\", sort by ending)", [&] {
        const QStringList ext = {"exe", "zip", "ace", "tar", "iso", "bmp", "gif", "jpg"};
        QStringList si;
        QStringList no;
        const LinkList links = extractLinks(text, QStringLiteral("a href="),
                                            QStringLiteral("http://127.0.0.1/pages/"));
        for (const QString &address : links.addresses)
            (SearchExtension(address, ext) ? no : si).append(address);
        if (si.size() + no.size() != Links)
            qFatal("%lld addresses found", qlonglong(si.size() + no.size()));
    });

    QTemporaryDir home;
    Settings settings;
    FakeDesktop desktop;
    RecordingHistory history;
    const ProgramFolder folder(home.path());
    const auto rows = [](int) { return std::make_unique<RowState>(); };
    ActiveList active(settings, desktop, history, folder, rows);
    InactiveList inactive(settings, desktop, history, folder, rows);
    PageServer server(page);
    const QString url = QStringLiteral("http://127.0.0.1:%1/big.html").arg(server.serverPort());

    LinkGrabber grabber(active, inactive, settings, desktop, folder);
    grabber.load(QString());
    measure("grabber: fetch over loopback and sort", [&] { grab(grabber, url); });

    LinkGrabberWindow window(active, inactive, settings, desktop, folder);
    window.show();
    measure("grabber window: fetch, sort and show the lists", [&] { grab(window.model(), url); });
    return 0;
}
