#include "scriptedftpserver.h"

#include <QTimer>

namespace {

// Replies go out a little apart, as separate chunks, so that each one is read on its own.
constexpr int ReplyGapMs = 50;

} // namespace

ScriptedFtpServer::ScriptedFtpServer(const QByteArray &file, QObject *parent)
    : QObject(parent), m_file(file)
{
    m_control.listen(QHostAddress::LocalHost, 0);
    connect(&m_control, &QTcpServer::newConnection, this, &ScriptedFtpServer::acceptControl);
    connect(&m_passive, &QTcpServer::newConnection, this, [this] {
        m_data = m_passive.nextPendingConnection();
        m_data->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        m_passive.close();
        if (m_retrWaiting)
            sendFile();
    });
}

QString ScriptedFtpServer::url(const QString &path) const
{
    return QStringLiteral("ftp://127.0.0.1:%1/%2").arg(port()).arg(path);
}

QList<QByteArray> ScriptedFtpServer::commandWords() const
{
    QList<QByteArray> words;
    for (const QByteArray &line : m_commands)
        words.append(line.trimmed());
    return words;
}

void ScriptedFtpServer::acceptControl()
{
    while (QTcpSocket *socket = m_control.nextPendingConnection()) {
        socket->setParent(this);
        // Each write leaves at once, so pieces sent apart arrive apart.
        socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        m_session = socket;
        m_pending.clear();
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] {
            if (socket != m_session)
                return;
            m_pending += socket->readAll();
            for (qsizetype end = m_pending.indexOf("\r\n"); end >= 0;
                 end = m_pending.indexOf("\r\n")) {
                const QByteArray line = m_pending.left(end + 2);
                m_pending.remove(0, end + 2);
                m_commands.append(line);
                handle(line);
            }
        });
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        reply(greeting);
    }
}

void ScriptedFtpServer::reply(const QList<QByteArray> &chunks)
{
    for (const QByteArray &chunk : chunks) {
        QTimer::singleShot(++m_queuedReplies * ReplyGapMs, this, [this, chunk] {
            --m_queuedReplies;
            if (m_session) {
                m_session->write(chunk);
                m_session->flush();
            }
        });
    }
}

void ScriptedFtpServer::handle(const QByteArray &line)
{
    if (answer) {
        if (const auto chunks = answer(line)) {
            reply(*chunks);
            return;
        }
    }
    const QByteArray trimmed = line.trimmed();
    const qsizetype blank = trimmed.indexOf(' ');
    const QByteArray word = (blank < 0 ? trimmed : trimmed.left(blank)).toUpper();
    const QByteArray argument = blank < 0 ? QByteArray() : trimmed.mid(blank + 1);
    if (word == "USER") {
        reply({"331 Contraseña, por favor\r\n"});
    } else if (word == "PASS") {
        const bool refused = !requiredPassword.isEmpty() && argument != requiredPassword;
        reply({refused ? "530 Usuario incorrecto\r\n" : "230 Dentro\r\n"});
    } else if (word == "TYPE") {
        reply({"200 Tipo I\r\n"});
    } else if (word == "CWD") {
        reply({"250 Hecho\r\n"});
    } else if (word == "REST") {
        if (refuseRest) {
            reply({"502 No implementado\r\n"});
        } else {
            m_offset = argument.toLongLong();
            reply({"350 Seguiremos desde " + argument + "\r\n"});
        }
    } else if (word == "SIZE") {
        reply({"213 " + QByteArray::number(m_file.size()) + "\r\n"});
    } else if (word == "PASV") {
        openPassive();
    } else if (word == "RETR") {
        reply({"150 Enviando\r\n"});
        m_retrWaiting = true;
        if (m_data)
            sendFile();
    } else if (word == "QUIT") {
        reply({"221 Adiós\r\n"});
    } else {
        reply({"502 Orden desconocida\r\n"});
    }
}

void ScriptedFtpServer::openPassive()
{
    m_passive.close();
    m_passive.listen(QHostAddress::LocalHost, 0);
    const quint16 port = m_passive.serverPort();
    reply({"227 Modo pasivo (127,0,0,1," + QByteArray::number(port / 256) + "," +
           QByteArray::number(port % 256) + ")\r\n"});
}

void ScriptedFtpServer::sendFile()
{
    m_retrWaiting = false;
    m_data->write(m_file.mid(m_offset));
    m_data->disconnectFromHost();
    m_offset = 0;
    reply({"226 Terminado\r\n"});
}
