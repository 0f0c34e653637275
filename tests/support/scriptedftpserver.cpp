#include "scriptedftpserver.h"

#include <QHash>
#include <QTimer>

ScriptedFtpServer::ScriptedFtpServer(const QByteArray &file, QObject *parent)
    : QObject(parent), m_file(file)
{
    m_control.listen(QHostAddress::LocalHost, 0);
    connect(&m_control, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket *socket = m_control.nextPendingConnection()) {
            socket->setParent(this);
            // Each write leaves at once, so pieces sent apart arrive apart.
            socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
            m_session = socket;
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] {
                while (socket == m_session && socket->canReadLine()) {
                    m_commands.append(socket->readLine());
                    handle(m_commands.last());
                }
            });
            connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
            reply(greeting);
        }
    });
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
    return QStringLiteral("ftp://127.0.0.1:%1/%2").arg(m_control.serverPort()).arg(path);
}

QByteArray ScriptedFtpServer::commandWords() const
{
    QList<QByteArray> words;
    for (const QByteArray &line : m_commands)
        words.append(line.trimmed());
    return words.join(", ");
}

// Replies go out a little apart, as separate chunks, so that each one is read on its own.
void ScriptedFtpServer::reply(const QList<QByteArray> &chunks)
{
    for (const QByteArray &chunk : chunks) {
        QTimer::singleShot(++m_queuedReplies * 50, this, [this, chunk] {
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
    if (const auto chunks = answer ? answer(line) : std::nullopt) {
        reply(*chunks);
        return;
    }
    const QByteArray word = line.left(4).trimmed().toUpper();
    const QByteArray argument = line.mid(word.size() + 1).trimmed();
    static const QHash<QByteArray, QByteArray> usual{{"USER", "331 Contraseña, por favor"},
                                                     {"PASS", "230 Dentro"},
                                                     {"TYPE", "200 Tipo I"},
                                                     {"CWD", "250 Hecho"},
                                                     {"QUIT", "221 Adiós"}};
    if (word == "REST") {
        m_offset = argument.toLongLong();
        reply({"350 Seguiremos desde " + argument + "\r\n"});
    } else if (word == "SIZE") {
        reply({"213 " + QByteArray::number(m_file.size()) + "\r\n"});
    } else if (word == "PASV") {
        m_passive.close();
        m_passive.listen(QHostAddress::LocalHost, 0);
        const quint16 port = m_passive.serverPort();
        reply({"227 Modo pasivo (127,0,0,1," + QByteArray::number(port / 256) + "," +
               QByteArray::number(port % 256) + ")\r\n"});
    } else if (word == "RETR") {
        reply({"150 Enviando\r\n"});
        m_retrWaiting = true;
        if (m_data)
            sendFile();
    } else {
        reply({usual.value(word, "502 Orden desconocida") + "\r\n"});
    }
}

void ScriptedFtpServer::sendFile()
{
    m_retrWaiting = false;
    m_data->write(m_file.mid(std::exchange(m_offset, 0)));
    m_data->disconnectFromHost();
    reply({"226 Terminado\r\n"});
}
