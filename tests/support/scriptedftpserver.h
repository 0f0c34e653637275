#pragma once

#include <QHash>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <functional>
#include <optional>

// An FTP server on 127.0.0.1 for one file, with a passive data listener. It records every
// command line byte for byte and answers like a plain anonymous server unless told otherwise.
class ScriptedFtpServer final : public QObject
{
public:
    // The exact bytes to answer a command with; nullopt leaves it to the usual answer.
    std::function<std::optional<QByteArray>(const QByteArray &line)> answer;

    explicit ScriptedFtpServer(const QByteArray &file) : m_file(file)
    {
        m_control.listen(QHostAddress::LocalHost, 0);
        connect(&m_control, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket *socket = m_control.nextPendingConnection()) {
                socket->setParent(this);
                m_session = socket;
                connect(socket, &QTcpSocket::readyRead, this, [this, socket] {
                    while (socket == m_session && socket->canReadLine()) {
                        m_commands.append(socket->readLine().trimmed());
                        handle(m_commands.last());
                    }
                });
                connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
                reply("220 Servidor de pruebas\r\n");
            }
        });
        connect(&m_passive, &QTcpServer::newConnection, this, [this] {
            m_data = m_passive.nextPendingConnection();
            m_passive.close();
            if (m_retrWaiting)
                sendFile();
        });
    }

    QString url(const QString &path) const
    {
        return QStringLiteral("ftp://127.0.0.1:%1/%2").arg(m_control.serverPort()).arg(path);
    }
    // The command lines received, without their line ends, joined by ", ".
    QByteArray commandWords() const { return m_commands.join(", "); }

private:
    // Replies go out a little apart, so that each one is read on its own.
    void reply(const QByteArray &text)
    {
        QTimer::singleShot(++m_queuedReplies * 50, this, [this, text] {
            --m_queuedReplies;
            if (m_session)
                m_session->write(text);
        });
    }

    void handle(const QByteArray &line)
    {
        if (const auto text = answer ? answer(line) : std::nullopt)
            return reply(*text);
        const QByteArray word = line.left(4).trimmed().toUpper();
        const QByteArray argument = line.mid(word.size() + 1);
        static const QHash<QByteArray, QByteArray> usual{{"USER", "331 Contraseña, por favor"},
                                                         {"PASS", "230 Dentro"},
                                                         {"TYPE", "200 Tipo I"},
                                                         {"CWD", "250 Hecho"},
                                                         {"QUIT", "221 Adiós"}};
        if (word == "REST") {
            m_offset = argument.toLongLong();
            reply("350 Seguiremos desde " + argument + "\r\n");
        } else if (word == "SIZE") {
            reply("213 " + QByteArray::number(m_file.size()) + "\r\n");
        } else if (word == "PASV") {
            m_passive.close();
            m_passive.listen(QHostAddress::LocalHost, 0);
            const quint16 port = m_passive.serverPort();
            reply("227 Modo pasivo (127,0,0,1," + QByteArray::number(port / 256) + "," +
                  QByteArray::number(port % 256) + ")\r\n");
        } else if (word == "RETR") {
            reply("150 Enviando\r\n");
            m_retrWaiting = true;
            if (m_data)
                sendFile();
        } else {
            reply(usual.value(word, "502 Orden desconocida") + "\r\n");
        }
    }

    void sendFile()
    {
        m_retrWaiting = false;
        m_data->write(m_file.mid(std::exchange(m_offset, 0)));
        m_data->disconnectFromHost();
        reply("226 Terminado\r\n");
    }

    QTcpServer m_control;
    QTcpServer m_passive;
    QPointer<QTcpSocket> m_session;
    QPointer<QTcpSocket> m_data;
    QByteArray m_file;
    QList<QByteArray> m_commands;
    qint64 m_offset = 0;
    bool m_retrWaiting = false;
    int m_queuedReplies = 0;
};
