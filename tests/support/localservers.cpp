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

bool accepting(quint16 port)
{
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, port);
    return socket.waitForConnected(200);
}

} // namespace

LocalServer::~LocalServer()
{
    if (m_process.state() != QProcess::NotRunning) {
        m_process.terminate();
        if (!m_process.waitForFinished(3000)) {
            m_process.kill();
            m_process.waitForFinished(3000);
        }
    }
}

bool LocalServer::start()
{
    m_port = freePort();
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    launch(m_process);
    if (!m_process.waitForStarted(5000)) {
        m_error = m_process.program() + QStringLiteral(": ") + m_process.errorString();
        return false;
    }
    const QDeadlineTimer deadline(10000);
    while (!deadline.hasExpired()) {
        if (m_process.state() == QProcess::NotRunning) {
            m_error = m_process.program() + QStringLiteral(" ended: ") +
                      QString::fromLocal8Bit(m_process.readAll());
            return false;
        }
        if (accepting(m_port))
            return true;
        QThread::msleep(50);
    }
    m_error = m_process.program() + QStringLiteral(" did not listen on its port");
    return false;
}

QString NginxServer::url(const QString &name) const
{
    const QString scheme =
        m_tls.certificate.isEmpty() ? QStringLiteral("http") : QStringLiteral("https");
    return QStringLiteral("%1://127.0.0.1:%2/%3").arg(scheme).arg(m_port).arg(name);
}

void NginxServer::launch(QProcess &process)
{
    const QString work = m_work.path();
    const QString config =
        QStringLiteral("daemon off;\nmaster_process off;\nworker_processes 1;\n"
                       "pid %1/nginx.pid;\nerror_log %1/error.log;\n"
                       "events { worker_connections 64; }\n"
                       "http {\n  access_log off;\n  client_body_temp_path %1/body;\n"
                       "  proxy_temp_path %1/proxy;\n  fastcgi_temp_path %1/fastcgi;\n"
                       "  uwsgi_temp_path %1/uwsgi;\n  scgi_temp_path %1/scgi;\n"
                       "  server {\n    listen 127.0.0.1:%2%3;\n    root %4;\n    %5\n  }\n}\n")
            .arg(work)
            .arg(m_port)
            .arg(m_tls.certificate.isEmpty() ? QString() : QStringLiteral(" ssl"), m_root,
                 m_tls.certificate.isEmpty()
                     ? m_extra
                     : QStringLiteral("ssl_certificate %1;\n    ssl_certificate_key %2;")
                           .arg(m_tls.certificate, m_tls.key));
    QFile file(work + QStringLiteral("/nginx.conf"));
    if (file.open(QIODevice::WriteOnly))
        file.write(config.toUtf8());
    file.close();
    process.start(QStringLiteral("/usr/sbin/nginx"),
                  {QStringLiteral("-p"), work, QStringLiteral("-c"), file.fileName(),
                   QStringLiteral("-e"), work + QStringLiteral("/error.log")});
}

QString FtpdServer::url(const QString &name) const
{
    return QStringLiteral("ftp://127.0.0.1:%1/%2").arg(m_port).arg(name);
}

void FtpdServer::launch(QProcess &process)
{
    // The system interpreter, which has the Debian package; another python3 may come first on
    // the PATH.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("PYTHONPATH"));
    environment.remove(QStringLiteral("PYTHONHOME"));
    process.setProcessEnvironment(environment);
    if (m_bytesPerSecond == 0) {
        process.start(QStringLiteral("/usr/bin/python3"),
                      {QStringLiteral("-m"), QStringLiteral("pyftpdlib"), QStringLiteral("-i"),
                       QStringLiteral("127.0.0.1"), QStringLiteral("-p"), QString::number(m_port),
                       QStringLiteral("-d"), m_root});
        return;
    }
    // The same server, with the data connections of its own throttled handler.
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
    process.start(QStringLiteral("/usr/bin/python3"),
                  {QStringLiteral("-c"), script, QString::number(m_port), m_root,
                   QString::number(m_bytesPerSecond)});
}
