#include "nativehost.h"

#include "failure.h"
#include "linkextraction.h"
#include "singleinstance.h"

#include <QDeadlineTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QThread>
#include <QtEndian>
#include <cerrno>
#include <signal.h>
#include <unistd.h>

namespace {

// A program started for the browser may take a while the first time (the splash, the lists).
constexpr int StartMs = 30000;
constexpr int ListenMs = 3000;

QJsonObject failure(const QString &text)
{
    return {{QStringLiteral("ok"), false}, {QStringLiteral("error"), text}};
}

// `size` bytes of `fd`; fewer only where the input ends.
QByteArray readExactly(int fd, qint64 size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    qint64 done = 0;
    while (done < size) {
        const ssize_t got = ::read(fd, bytes.data() + done, size_t(size - done));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        done += got;
    }
    bytes.truncate(done);
    return bytes;
}

// Reads past a message too large to keep, so that the next one is read from its start.
bool skip(int fd, qint64 size)
{
    constexpr qint64 Piece = 64 * 1024;
    for (qint64 left = size; left > 0; left -= Piece) {
        const qint64 piece = std::min(left, Piece);
        if (readExactly(fd, piece).size() < piece)
            return false;
    }
    return true;
}

bool writeFrame(int fd, const QJsonObject &answer)
{
    const QByteArray json = QJsonDocument(answer).toJson(QJsonDocument::Compact);
    QByteArray frame(4, Qt::Uninitialized);
    qToUnaligned(quint32(json.size()), frame.data());
    frame += json;
    for (qint64 done = 0; done < frame.size();) {
        const ssize_t put = ::write(fd, frame.constData() + done, size_t(frame.size() - done));
        if (put < 0 && errno == EINTR)
            continue;
        if (put <= 0)
            return false;
        done += put;
    }
    return true;
}

bool isAlive(qint64 pid)
{
    return ::kill(pid_t(pid), 0) == 0 || errno != ESRCH;
}

} // namespace

NativeHost::NativeHost(const ProgramFolder &folder, const QString &program)
    : m_folder(folder), m_program(program)
{}

int NativeHost::serve(int in, int out)
{
    for (;;) {
        const QByteArray prefix = readExactly(in, 4);
        if (prefix.isEmpty())
            return 0;
        if (prefix.size() < 4) {
            writeFrame(out, failure(QStringLiteral("El mensaje llegó cortado: su longitud ocupa "
                                                   "menos de 4 bytes.")));
            return 1;
        }
        const quint32 length = qFromUnaligned<quint32>(prefix.constData());
        if (length > MaxMessage) {
            if (!writeFrame(out, failure(QStringLiteral("El mensaje ocupa más de 1 MB."))))
                return 1;
            if (!skip(in, length))
                return 1;
            continue;
        }
        const QByteArray message = readExactly(in, length);
        if (message.size() < qint64(length)) {
            writeFrame(out, failure(QStringLiteral("El mensaje llegó cortado: faltan ") +
                                    QString::number(length - message.size()) +
                                    QStringLiteral(" de sus ") + QString::number(length) +
                                    QStringLiteral(" bytes.")));
            return 1;
        }
        if (!writeFrame(out, answer(message)))
            return 1;
    }
}

QJsonObject NativeHost::answer(const QByteArray &message)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(message, &error);
    if (error.error != QJsonParseError::NoError)
        return failure(QStringLiteral("El mensaje no es JSON válido."));
    if (!document.isObject())
        return failure(QStringLiteral("El mensaje no es un objeto JSON."));
    if (document.object().value(QLatin1String("action")) == QLatin1String("extensions"))
        return extensions();
    const auto link = BrowserLink::fromJson(document.object());
    if (const auto *refusal = std::get_if<QString>(&link))
        return failure(*refusal);
    const QString problem = deliver(std::get<BrowserLink>(link));
    return problem.isEmpty() ? QJsonObject{{QStringLiteral("ok"), true}} : failure(problem);
}

QJsonObject NativeHost::extensions() const
{
    try {
        return {{QStringLiteral("ok"), true},
                {QStringLiteral("extensions"),
                 QJsonArray::fromStringList(wantedEndings(m_folder.file(EndingsFile)))}};
    } catch (const Failure &fault) {
        return failure(fault.description());
    }
}

QString NativeHost::deliver(const BrowserLink &link)
{
    switch (InstanceChannel::handOver(m_folder, {link})) {
    case InstanceChannel::Delivery::Taken:
        return {};
    case InstanceChannel::Delivery::Outdated:
        return QStringLiteral("El Corvane abierto es de una versión anterior, que no recibe "
                              "enlaces del navegador: ciérrelo y vuelva a intentarlo.");
    case InstanceChannel::Delivery::NoAnswer:
        return QStringLiteral("Corvane no ha contestado.");
    case InstanceChannel::Delivery::NoProgram:
        break;
    }
    if (!InstanceLock::isHeld(m_folder))
        return startProgram(link);
    // A program that has only just started takes the folder a moment before it listens; one
    // without windows never listens.
    const QDeadlineTimer deadline(ListenMs);
    while (!deadline.hasExpired()) {
        QThread::msleep(100);
        if (InstanceChannel::handOver(m_folder, {link}) == InstanceChannel::Delivery::Taken)
            return {};
    }
    return QStringLiteral("Corvane se está ejecutando sin ventanas con la carpeta ") +
           m_folder.dir() + QStringLiteral(" y no puede recibir enlaces del navegador.");
}

QString NativeHost::startProgram(const BrowserLink &link)
{
    // Its own input and output: those of the host belong to the browser.
    QProcess process;
    process.setProgram(m_program);
    process.setArguments({QStringLiteral("--home"), m_folder.dir()});
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    qint64 pid = 0;
    if (!process.startDetached(&pid))
        return QStringLiteral("No se ha podido abrir Corvane (") + m_program + QStringLiteral(").");
    // The link goes through the channel as soon as the program listens: the command line could
    // not carry the page and the cookies.
    const QDeadlineTimer deadline(StartMs);
    while (!deadline.hasExpired()) {
        QThread::msleep(100);
        const InstanceChannel::Delivery delivery = InstanceChannel::handOver(m_folder, {link});
        if (delivery == InstanceChannel::Delivery::Taken)
            return {};
        if (!isAlive(pid))
            return QStringLiteral("Corvane se ha cerrado al abrirse con la carpeta ") +
                   m_folder.dir() + QStringLiteral(".");
    }
    return QStringLiteral("Corvane no ha terminado de abrirse.");
}
