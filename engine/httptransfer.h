#pragma once

#include "chunkeddecoder.h"
#include "transfer.h"

// A download over HTTP or HTTPS: the request on connect, the reply taken apart as it arrives
// (status, size, redirect, chunked framing), the payload written at the file's position.
class HttpTransfer final : public Transfer
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(HttpTransfer)

public:
    HttpTransfer(DownloadSlot &slot, TransferEvents &events, const TransferContext &context,
                 int retries);

    void start() override;

private:
    // Where `ws` connects and what it asks for, from an address.
    void aim(const QString &address);
    void closeWs() override;
    bool endedEarly() const override;

    void opened() override;
    void received(QByteArrayView chunk) override;
    void handleHead(QByteArrayView chunk, qsizetype &payloadStart);
    void writeChunked(QByteArrayView framed);
    void refuse(const QString &text);
    void redirect(const QString &address);

    QString m_host;
    quint16 m_port = 0;
    QString m_path;
    bool m_secure = false;
    qint64 m_requestStart = 1; // where the Range line asked the server to start
    bool m_chunked = false;    // the reply on this connection is chunked
    ChunkedDecoder m_decoder;
    bool m_handled = false; // the current chunk ended the connection
};
