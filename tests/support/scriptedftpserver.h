#pragma once

#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <functional>
#include <optional>

// An FTP server on 127.0.0.1 for one file, with a passive data listener. It records every
// command line byte for byte and answers like a plain anonymous server unless told otherwise.
class ScriptedFtpServer final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ScriptedFtpServer)

public:
    explicit ScriptedFtpServer(const QByteArray &file, QObject *parent = nullptr);

    QString url(const QString &path) const;
    // The command lines received, each with its line end.
    const QList<QByteArray> &commands() const { return m_commands; }
    // The same without the line ends, joined by ", ".
    QByteArray commandWords() const;

    // Sent on connect, a chunk at a time, a little apart.
    QList<QByteArray> greeting = {"220 Servidor de pruebas\r\n"};
    // The exact bytes to answer a command with; nullopt leaves it to the usual answer.
    std::function<std::optional<QList<QByteArray>>(const QByteArray &line)> answer;

private:
    void handle(const QByteArray &line);
    void reply(const QList<QByteArray> &chunks);
    void sendFile();

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
