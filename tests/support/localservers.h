#pragma once

#include "testauthority.h"

#include <QDeadlineTimer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QThread>

// A real server on a free loopback port over a folder, stopped when the object goes.
class LocalServer
{
public:
    ~LocalServer()
    {
        if (m_process.state() == QProcess::NotRunning)
            return;
        m_process.terminate();
        if (!m_process.waitForFinished(3000)) {
            m_process.kill();
            m_process.waitForFinished(3000);
        }
    }

    // False, with the reason in error(), when the server did not come up.
    bool start()
    {
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.start();
        if (!m_process.waitForStarted(5000)) {
            m_error = m_process.program() + ": " + m_process.errorString();
            return false;
        }
        for (const QDeadlineTimer deadline(10000); !deadline.hasExpired(); QThread::msleep(50)) {
            if (m_process.state() == QProcess::NotRunning) {
                m_error = m_process.program() + " ended: " + m_process.readAll();
                return false;
            }
            QTcpSocket socket;
            socket.connectToHost(QHostAddress::LocalHost, m_port);
            if (socket.waitForConnected(200))
                return true;
        }
        m_error = m_process.program() + " did not listen on its port";
        return false;
    }
    QString error() const { return m_error; }
    quint16 port() const { return m_port; }
    QString url(const QString &name) const
    {
        return QStringLiteral("%1://127.0.0.1:%2/%3").arg(m_scheme).arg(m_port).arg(name);
    }

protected:
    LocalServer(const QString &scheme, const QString &program) : m_scheme(scheme)
    {
        QTcpServer probe;
        probe.listen(QHostAddress::LocalHost, 0);
        m_port = probe.serverPort();
        m_process.setProgram(program);
    }

    QTemporaryDir m_work;
    quint16 m_port;
    QString m_scheme;
    QProcess m_process; // given its arguments by the server, started by start()
    QString m_error;
};

// nginx serving the folder; `extra` goes into its server block (e.g. "limit_rate 200k;").
class NginxServer final : public LocalServer
{
public:
    explicit NginxServer(const QString &root, const QString &extra = {})
        : NginxServer(root, extra, ServerCertificate())
    {}
    // Over TLS with that certificate; its addresses are https://.
    NginxServer(const QString &root, const ServerCertificate &tls) : NginxServer(root, {}, tls) {}

private:
    NginxServer(const QString &root, const QString &extra, const ServerCertificate &tls)
        : LocalServer(tls.certificate.isEmpty() ? "http" : "https", "/usr/sbin/nginx")
    {
        const QString work = m_work.path();
        const QString secure =
            tls.certificate.isEmpty()
                ? QString()
                : QStringLiteral(" ssl;\n    ssl_certificate %1;\n    ssl_certificate_key %2")
                      .arg(tls.certificate, tls.key);
        QFile config(work + "/nginx.conf");
        if (config.open(QIODevice::WriteOnly)) {
            config.write(
                QStringLiteral(
                    "daemon off;\nmaster_process off;\nworker_processes 1;\n"
                    "pid %1/nginx.pid;\nerror_log %1/error.log;\n"
                    "events { worker_connections 64; }\n"
                    "http {\n  access_log off;\n  client_body_temp_path %1/body;\n"
                    "  proxy_temp_path %1/proxy;\n  fastcgi_temp_path %1/fastcgi;\n"
                    "  uwsgi_temp_path %1/uwsgi;\n  scgi_temp_path %1/scgi;\n"
                    "  server {\n    listen 127.0.0.1:%2%3;\n    root %4;\n    %5\n  }\n}\n")
                    .arg(work)
                    .arg(m_port)
                    .arg(secure, root, extra)
                    .toUtf8());
        }
        m_process.setArguments({"-p", work, "-c", config.fileName(), "-e", work + "/error.log"});
    }
};

// An anonymous, read-only FTP server over the folder, the stock one of the system's Python;
// sending at most `bytesPerSecond` on a data connection when that is not 0.
class FtpdServer final : public LocalServer
{
public:
    explicit FtpdServer(const QString &root, int bytesPerSecond = 0)
        : LocalServer("ftp", "/usr/bin/python3")
    {
        // The system interpreter has the Debian package; keep another Python's paths out.
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove("PYTHONPATH");
        environment.remove("PYTHONHOME");
        m_process.setProcessEnvironment(environment);
        const QString script =
            "import sys\n"
            "from pyftpdlib.authorizers import DummyAuthorizer\n"
            "from pyftpdlib.handlers import FTPHandler, ThrottledDTPHandler\n"
            "from pyftpdlib.servers import FTPServer\n"
            "ThrottledDTPHandler.write_limit = int(sys.argv[3])\n"
            "FTPHandler.dtp_handler = ThrottledDTPHandler\n"
            "FTPHandler.authorizer = DummyAuthorizer()\n"
            "FTPHandler.authorizer.add_anonymous(sys.argv[2])\n"
            "FTPServer(('127.0.0.1', int(sys.argv[1])), FTPHandler).serve_forever()\n";
        m_process.setArguments(
            {"-c", script, QString::number(m_port), root, QString::number(bytesPerSecond)});
    }
};
