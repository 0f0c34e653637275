#include "localservers.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QTcpServer>
#include <QTcpSocket>
#include <QThread>

namespace {

quint16 freePort()
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    return probe.serverPort();
}

} // namespace

LocalServer::LocalServer(QString scheme) : m_port(freePort()), m_scheme(std::move(scheme))
{
    m_process.setProcessChannelMode(QProcess::MergedChannels);
}

LocalServer::~LocalServer()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.terminate();
    if (!m_process.waitForFinished(3000)) {
        m_process.kill();
        m_process.waitForFinished(3000);
    }
}

bool LocalServer::start()
{
    m_process.start();
    const QString name = m_process.program() + QStringLiteral(": ");
    if (!m_process.waitForStarted(5000)) {
        m_error = name + m_process.errorString();
        return false;
    }
    for (const QDeadlineTimer deadline(10000); !deadline.hasExpired(); QThread::msleep(50)) {
        if (m_process.state() == QProcess::NotRunning) {
            m_error = name + QString::fromLocal8Bit(m_process.readAll());
            return false;
        }
        QTcpSocket socket;
        socket.connectToHost(QHostAddress::LocalHost, m_port);
        if (socket.waitForConnected(200))
            return true;
    }
    m_error = name + QStringLiteral("did not listen on its port");
    return false;
}

NginxServer::NginxServer(const QString &root, const QString &extra, const ServerCertificate &tls)
    : LocalServer(tls.certificate.isEmpty() ? QStringLiteral("http") : QStringLiteral("https"))
{
    const QString work = m_work.path();
    const QString secure =
        tls.certificate.isEmpty()
            ? QString()
            : QStringLiteral("ssl_certificate %1;\n    ssl_certificate_key %2;\n    ")
                  .arg(tls.certificate, tls.key);
    QFile config(work + QStringLiteral("/nginx.conf"));
    if (config.open(QIODevice::WriteOnly)) {
        config.write(
            QStringLiteral(
                "daemon off;\nmaster_process off;\nworker_processes 1;\n"
                "pid %1/nginx.pid;\nerror_log %1/error.log;\n"
                "events { worker_connections 64; }\n"
                "http {\n  access_log off;\n  client_body_temp_path %1/body;\n"
                "  proxy_temp_path %1/proxy;\n  fastcgi_temp_path %1/fastcgi;\n"
                "  uwsgi_temp_path %1/uwsgi;\n  scgi_temp_path %1/scgi;\n"
                "  server {\n    listen 127.0.0.1:%2%3;\n    root %4;\n    %5%6\n  }\n}\n")
                .arg(work)
                .arg(m_port)
                .arg(secure.isEmpty() ? QString() : QStringLiteral(" ssl"), root, secure, extra)
                .toUtf8());
    }
    m_process.setProgram(QStringLiteral("/usr/sbin/nginx"));
    m_process.setArguments({QStringLiteral("-p"), work, QStringLiteral("-c"), config.fileName(),
                            QStringLiteral("-e"), work + QStringLiteral("/error.log")});
}

FtpdServer::FtpdServer(const QString &root, int bytesPerSecond) : LocalServer(QStringLiteral("ftp"))
{
    // The system interpreter, which has the Debian package; another python3 may come first on
    // the PATH.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("PYTHONPATH"));
    environment.remove(QStringLiteral("PYTHONHOME"));
    m_process.setProcessEnvironment(environment);
    // The stock handlers, the data connection's throttled one with its limit (0: none).
    const QString script =
        QStringLiteral("import sys\n"
                       "from pyftpdlib.authorizers import DummyAuthorizer\n"
                       "from pyftpdlib.handlers import FTPHandler, ThrottledDTPHandler\n"
                       "from pyftpdlib.servers import FTPServer\n"
                       "ThrottledDTPHandler.write_limit = int(sys.argv[3])\n"
                       "FTPHandler.dtp_handler = ThrottledDTPHandler\n"
                       "FTPHandler.authorizer = DummyAuthorizer()\n"
                       "FTPHandler.authorizer.add_anonymous(sys.argv[2])\n"
                       "FTPServer(('127.0.0.1', int(sys.argv[1])), FTPHandler).serve_forever()\n");
    m_process.setProgram(QStringLiteral("/usr/bin/python3"));
    m_process.setArguments({QStringLiteral("-c"), script, QString::number(m_port), root,
                            QString::number(bytesPerSecond)});
}
