#include "singleinstance.h"

#include <QCryptographicHash>
#include <QDir>
#include <QJsonDocument>
#include <QLocalServer>
#include <QLocalSocket>
#include <QStandardPaths>
#include <QSysInfo>
#include <QTimer>
#include <cerrno>
#include <signal.h>

namespace {

const QByteArray Greeting = QByteArrayLiteral("CORVANE 1\n");
const QByteArray Taken = QByteArrayLiteral("OK\n");
// A program that reads only addresses answers a message of links with Taken all the same.
const QByteArray LinksGreeting = QByteArrayLiteral("CORVANE 2\n");
const QByteArray LinksTaken = QByteArrayLiteral("OK 2\n");
// A message holds a handful of addresses; anything larger is not one.
constexpr qint64 MaxMessage = 1024 * 1024;
constexpr int WaitMs = 5000;

} // namespace

InstanceLock::InstanceLock(const ProgramFolder &folder)
    : m_file(folder.file(QStringLiteral("corvane.lock")))
{
    // Held for the whole run, so only a dead owner makes it stale.
    m_file.setStaleLockTime(0);
}

bool InstanceLock::tryLock()
{
    return m_file.tryLock(0);
}

bool InstanceLock::isHeld(const ProgramFolder &folder)
{
    QLockFile file(folder.file(QStringLiteral("corvane.lock")));
    qint64 pid = 0;
    QString host;
    QString application;
    if (!file.getLockInfo(&pid, &host, &application) || pid <= 0)
        return false;
    // The lock of a program that was killed stays behind; only a live owner holds it.
    return host != QSysInfo::machineHostName() || ::kill(pid_t(pid), 0) == 0 || errno == EPERM;
}

QString withoutZelq(const QString &address)
{
    return address.startsWith(QLatin1String("zelq:")) ? address.mid(5) : address;
}

InstanceChannel::InstanceChannel(const ProgramFolder &folder, QObject *parent)
    : QObject(parent), m_name(nameFor(folder)), m_server(new QLocalServer(this))
{
    connect(m_server, &QLocalServer::newConnection, this, &InstanceChannel::accept);
}

QString InstanceChannel::nameFor(const ProgramFolder &folder)
{
    const QString canonical = QDir(folder.dir()).canonicalPath();
    const QByteArray hash =
        QCryptographicHash::hash((canonical.isEmpty() ? folder.dir() : canonical).toUtf8(),
                                 QCryptographicHash::Sha1)
            .toHex()
            .left(16);
    QString runtime = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (runtime.isEmpty())
        runtime = QDir::tempPath();
    return runtime + QStringLiteral("/corvane-") + QString::fromLatin1(hash);
}

bool InstanceChannel::listen()
{
    // Only the holder of the folder's lock listens, so a socket left by a killed program is ours
    // to replace.
    QLocalServer::removeServer(m_name);
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    return m_server->listen(m_name);
}

void InstanceChannel::accept()
{
    while (QLocalSocket *socket = m_server->nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
            if (socket->bytesAvailable() > MaxMessage) {
                socket->abort();
                return;
            }
            // A message ends with an empty line.
            const QByteArray pending = socket->peek(MaxMessage);
            if (!pending.endsWith("\n\n"))
                return;
            const QByteArray message = socket->readAll();
            // Added after the answer, since adding may ask the person something.
            if (message.startsWith(LinksGreeting)) {
                const QList<BrowserLink> links = linksOf(message);
                socket->write(LinksTaken);
                if (!links.isEmpty())
                    QTimer::singleShot(0, this, [this, links] { Q_EMIT linksReceived(links); });
            } else {
                const QStringList urls = addressesOf(message);
                socket->write(Taken);
                if (!urls.isEmpty())
                    QTimer::singleShot(0, this, [this, urls] { Q_EMIT received(urls); });
            }
            socket->flush();
        });
    }
}

QByteArray InstanceChannel::messageOf(const QStringList &urls)
{
    QByteArray message = Greeting;
    for (const QString &url : urls)
        message += url.toUtf8() + '\n';
    return message + '\n';
}

QStringList InstanceChannel::addressesOf(const QByteArray &message)
{
    if (message.size() > MaxMessage || !message.startsWith(Greeting) || !message.endsWith("\n\n"))
        return {};
    QStringList urls;
    const QList<QByteArray> lines = message.mid(Greeting.size()).split('\n');
    for (const QByteArray &line : lines) {
        const QString url = withoutZelq(QString::fromUtf8(line).trimmed());
        if (!url.isEmpty())
            urls.append(url);
    }
    return urls;
}

QByteArray InstanceChannel::messageOf(const QList<BrowserLink> &links)
{
    QByteArray message = LinksGreeting;
    // Compact JSON escapes every line break, so each link is one line.
    for (const BrowserLink &link : links)
        message += QJsonDocument(link.toJson()).toJson(QJsonDocument::Compact) + '\n';
    return message + '\n';
}

QList<BrowserLink> InstanceChannel::linksOf(const QByteArray &message)
{
    if (message.size() > MaxMessage || !message.startsWith(LinksGreeting) ||
        !message.endsWith("\n\n"))
        return {};
    QList<BrowserLink> links;
    const QList<QByteArray> lines = message.mid(LinksGreeting.size()).split('\n');
    for (const QByteArray &line : lines) {
        const auto link = BrowserLink::fromJson(QJsonDocument::fromJson(line).object());
        if (const auto *valid = std::get_if<BrowserLink>(&link))
            links.append(*valid);
    }
    return links;
}

bool InstanceChannel::handOver(const ProgramFolder &folder, const QStringList &urls)
{
    return send(folder, messageOf(urls), Taken) == Delivery::Taken;
}

InstanceChannel::Delivery InstanceChannel::handOver(const ProgramFolder &folder,
                                                    const QList<BrowserLink> &links)
{
    return send(folder, messageOf(links), LinksTaken);
}

InstanceChannel::Delivery InstanceChannel::send(const ProgramFolder &folder,
                                                const QByteArray &message, const QByteArray &taken)
{
    QLocalSocket socket;
    socket.connectToServer(nameFor(folder));
    if (!socket.waitForConnected(WaitMs))
        return Delivery::NoProgram;
    socket.write(message);
    if (!socket.waitForBytesWritten(WaitMs))
        return Delivery::NoAnswer;
    // Up to the answer's line end: the two answers differ in length.
    while (!socket.canReadLine()) {
        if (!socket.waitForReadyRead(WaitMs))
            return Delivery::NoAnswer;
    }
    const QByteArray answer = socket.readLine();
    if (answer == taken)
        return Delivery::Taken;
    return answer == Taken ? Delivery::Outdated : Delivery::NoAnswer;
}
