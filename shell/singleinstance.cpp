#include "singleinstance.h"

#include <QCryptographicHash>
#include <QDir>
#include <QLocalServer>
#include <QLocalSocket>
#include <QStandardPaths>
#include <QTimer>

namespace {

const QByteArray Greeting = QByteArrayLiteral("CORVANE 1\n");
const QByteArray Taken = QByteArrayLiteral("OK\n");
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
            const QStringList urls = addressesOf(socket->readAll());
            socket->write(Taken);
            socket->flush();
            // Added after the answer, since adding may ask the person something.
            if (!urls.isEmpty())
                QTimer::singleShot(0, this, [this, urls] { Q_EMIT received(urls); });
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

bool InstanceChannel::handOver(const ProgramFolder &folder, const QStringList &urls)
{
    QLocalSocket socket;
    socket.connectToServer(nameFor(folder));
    if (!socket.waitForConnected(WaitMs))
        return false;
    socket.write(messageOf(urls));
    if (!socket.waitForBytesWritten(WaitMs))
        return false;
    while (socket.bytesAvailable() < Taken.size()) {
        if (!socket.waitForReadyRead(WaitMs))
            return false;
    }
    return socket.readAll().startsWith(Taken);
}
