#include "pagefetch.h"

#include "tlstrust.h"
#include "urls.h"

PageFetch::PageFetch(QObject *parent) : QObject(parent)
{
    m_ws.setObjectName(QStringLiteral("ws"));
    m_ws.setSslConfiguration(secureConfiguration());
    m_limit.setSingleShot(true);
    m_limit.setInterval(TimeLimitMs);
    connect(&m_limit, &QTimer::timeout, this, &PageFetch::timeLimitReached);
    connect(&m_ws, &QSslSocket::connected, this, [this] {
        if (m_ws.mode() == QSslSocket::UnencryptedMode)
            sendRequest();
    });
    connect(&m_ws, &QSslSocket::encrypted, this, &PageFetch::sendRequest);
    connect(&m_ws, &QSslSocket::readyRead, this, &PageFetch::readArrived);
    connect(&m_ws, &QSslSocket::disconnected, this, &PageFetch::closedByServer);
    connect(&m_ws, &QSslSocket::errorOccurred, this, &PageFetch::socketError);
}

QByteArray PageFetch::request(const QString &url)
{
    return QByteArrayLiteral("GET /") + PathOf(url).toUtf8() + QByteArrayLiteral(" HTTP/1.1\r\n") +
           QByteArrayLiteral("Host: ") + HostLineOf(url).toUtf8() + QByteArrayLiteral("\r\n") +
           QByteArrayLiteral("Connection: close\r\n\r\n");
}

bool PageFetch::start(const QString &url, Desktop &desktop)
{
    stop();
    m_code.clear();
    m_received = 0;
    m_decoder = QStringDecoder(QStringDecoder::Utf8);
    const QString host = HostOf(url, desktop);
    if (host == HostError)
        return false;
    const quint16 port = PortOf(url);
    m_request = request(url);
    m_running = true;
    m_limit.start();
    if (url.startsWith(QLatin1String("https://")))
        m_ws.connectToHostEncrypted(host, port);
    else
        m_ws.connectToHost(host, port);
    return true;
}

void PageFetch::stop()
{
    // Our own close must not run the handlers of a close by the server.
    m_running = false;
    m_limit.stop();
    m_ws.abort();
}

void PageFetch::sendRequest()
{
    if (m_running)
        m_ws.write(m_request);
}

void PageFetch::readArrived()
{
    if (!m_running)
        return;
    const QByteArray bytes = m_ws.readAll();
    m_received += bytes.size();
    QString text = m_decoder(bytes);
    text.replace(QLatin1Char('\''), QLatin1Char('"'));
    m_code += text;
    if (m_received > MaxBytes) {
        stop();
        Q_EMIT cutShort(QStringLiteral("La página pasa de %1 Mb: solo se buscan direcciones en "
                                       "lo recibido hasta ahora.")
                            .arg(MaxBytes / (1024 * 1024)));
    }
}

void PageFetch::closedByServer()
{
    if (!m_running)
        return;
    readArrived();
    if (!m_running)
        return;
    stop();
    Q_EMIT finished();
}

void PageFetch::socketError(QAbstractSocket::SocketError error)
{
    // A close by the server also comes as this error; the close handler deals with it.
    if (!m_running || error == QAbstractSocket::RemoteHostClosedError)
        return;
    const QString description = m_ws.errorString();
    stop();
    Q_EMIT failed(description);
}

void PageFetch::timeLimitReached()
{
    if (!m_running)
        return;
    stop();
    Q_EMIT cutShort(QStringLiteral("La página no ha terminado de llegar en %1 segundos: solo se "
                                   "buscan direcciones en lo recibido hasta ahora.")
                        .arg(TimeLimitMs / 1000));
}
