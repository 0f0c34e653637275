#pragma once

#include "ftpreply.h"
#include "transfer.h"

#include <QTcpSocket>

// A download over FTP: the dialogue on the control connection `ftp`, driven by the replies, and
// the file on the data connection `ws`, which ends the download when the server closes it.
class FtpTransfer final : public Transfer
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FtpTransfer)

public:
    FtpTransfer(DownloadSlot &slot, TransferEvents &events, const TransferContext &context,
                int retries);

    void start() override;

private:
    void closeConnections() override;

    // The data connection asks for nothing: RETR goes on the control connection.
    void opened() override {}
    void received(QByteArrayView chunk) override;

    void controlConnected();
    void controlReadyRead();
    void reply(const QByteArray &line);
    void controlClosed();
    void controlError(QAbstractSocket::SocketError error);
    void send(const QString &text);
    void loginRefused();

    QTcpSocket m_ftp;
    Ftp::ReplyReader m_replies;
    QList<QByteArray> m_sent; // the commands still to be answered, oldest first
    QString m_host;
    quint16 m_port = 0;
};
