#pragma once

#include "chunkeddecoder.h"
#include "segments.h"
#include "transfer.h"

#include <memory>
#include <optional>

// A download over HTTP or HTTPS: the request on connect, the reply taken apart as it arrives
// (status, size, redirect, chunked framing), the payload written at the file's position. When the
// server sends a part of a file large enough, and more than one connection is allowed, the rest
// is fetched in parts beside this connection.
class HttpTransfer final : public Transfer, Segments::Owner
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(HttpTransfer)

public:
    HttpTransfer(DownloadSlot &slot, TransferEvents &events, const TransferContext &context,
                 int retries);

    ~HttpTransfer() override;

    void start() override;
    int connectionCount() const override;
    QList<std::pair<double, double>> fetchedParts() const override;
    void listSaved() override;

private:
    // Where `ws` connects and what it asks for, from an address.
    void aim(const QString &address);
    void closeWs() override;
    void closeConnections() override;
    bool endedEarly() const override;
    void closedByPeer() override;
    void failed(QAbstractSocket::SocketError error) override;
    void stalled() override;

    // The download runs in parts: resumed from the plan it was saved with, if any.
    bool resumeParts();
    // The rest of the file from `from` on, split between connections when it is large enough.
    void beginParts(qint64 from);
    void makeSegments(PartPlan plan);
    void writeMainPart(QByteArrayView bytes);
    // The main connection stopped fetching its part before its end.
    void mainPartLost();
    void allFetched() override;
    bool spendRetry() override { return Transfer::spendRetry(); }
    void fallBack() override;

    void opened() override;
    void received(QByteArrayView chunk) override;
    void readHead();
    void handleHead(QByteArrayView chunk);
    void writeBody(QByteArrayView bytes);
    // A success: where its bytes go, the file's version and name, the size.
    void takeReply(QByteArrayView chunk, bool partial);
    QString rejection(QByteArrayView chunk) const;
    void writeChunked(QByteArrayView framed);
    void refuse(const QString &text);
    void redirect(const QString &location);
    // A server that cannot answer now: tried again after `seconds`, or the set pause.
    void tryLater(QByteArrayView chunk, int seconds);
    void alreadyComplete(qint64 length);
    // The name the server gives a new download, in the same folder.
    void nameFrom(const QString &offered);

    QString m_host;
    quint16 m_port = 0;
    QString m_path;
    bool m_secure = false;
    qint64 m_requestStart = 1; // where the Range line asked the server to start
    bool m_chunked = false;    // the reply on this connection is chunked
    ChunkedDecoder m_decoder;
    bool m_handled = false; // the current chunk ended the connection
    // A head longer than this is no head: the connection is dropped and tried again.
    static constexpr qsizetype MaxHead = 64 * 1024;
    std::optional<QByteArray> m_head; // the head read so far, until its blank line
    static constexpr int MaxRedirects = 10;
    int m_redirects = 0;                  // of this attempt
    std::unique_ptr<Segments> m_segments; // while the download runs in parts
};
