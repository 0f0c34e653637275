#pragma once

#include "files.h"
#include "testauthority.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
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
        // Read as it comes: a server whose output is not read stops once the pipe is full.
        QObject::connect(&m_process, &QProcess::readyRead, &m_process,
                         [this] { m_output += m_process.readAll(); });
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
    // What the server has said so far: its output, or the log file it was told to keep.
    QByteArray log() { return m_logFile.isEmpty() ? m_output : readFile(m_logFile); }
    QString url(const QString &name) const
    {
        return QStringLiteral("%1://127.0.0.1:%2/%3").arg(m_scheme).arg(m_port).arg(name);
    }

protected:
    explicit LocalServer(const QString &program, const QString &scheme = QStringLiteral("ftp"))
        : m_scheme(scheme)
    {
        QTcpServer probe;
        probe.listen(QHostAddress::LocalHost, 0);
        m_port = probe.serverPort();
        m_process.setProgram(program);
    }

    QString m_scheme;
    QTemporaryDir m_work;
    quint16 m_port;
    QProcess m_process; // given its arguments by the server, started by start()
    QString m_error;
    QString m_logFile;
    QByteArray m_output;

    // The served files must be readable by the account an FTP server serves them as.
    static void openToAll(const QString &root)
    {
        const auto all = QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadGroup |
                         QFileDevice::ReadOther;
        QFile::setPermissions(root, all | QFileDevice::ExeOwner | QFileDevice::ExeGroup |
                                        QFileDevice::ExeOther);
        for (const QFileInfo &entry :
             QDir(root).entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot)) {
            if (entry.isDir())
                openToAll(entry.filePath());
            else
                QFile::setPermissions(entry.filePath(), all);
        }
    }
};

// nginx serving the folder; `extra` goes into its server block (e.g. "limit_rate 200k;").
class NginxServer final : public LocalServer
{
public:
    // Over TLS with that certificate when it has one; its addresses are then https://.
    explicit NginxServer(const QString &root, const QString &extra = {},
                         const ServerCertificate &tls = {})
        : LocalServer("/usr/sbin/nginx", tls.certificate.isEmpty() ? "http" : "https")
    {
        const QString work = m_work.path();
        const QString secure =
            tls.certificate.isEmpty()
                ? QString()
                : QStringLiteral(" ssl;\n    ssl_certificate %1;\n    ssl_certificate_key %2")
                      .arg(tls.certificate, tls.key);
        writeFile(
            work + "/nginx.conf",
            QStringLiteral("daemon off;\nmaster_process off;\nworker_processes 1;\n"
                           "pid %1/nginx.pid;\nerror_log %1/error.log;\n"
                           "events { worker_connections 64; }\n"
                           "http {\n  access_log off;\n  log_format ranges '$http_range';\n  "
                           "client_body_temp_path %1/body;\n"
                           "  proxy_temp_path %1/proxy;\n  fastcgi_temp_path %1/fastcgi;\n"
                           "  uwsgi_temp_path %1/uwsgi;\n  scgi_temp_path %1/scgi;\n"
                           "  server {\n    listen 127.0.0.1:%2%3;\n    root %4;\n    %5\n  }\n}\n")
                .arg(work)
                .arg(m_port)
                .arg(secure, root, extra)
                .toUtf8());
        m_process.setArguments({"-p", work, "-c", work + "/nginx.conf", "-e", work + "/error.log"});
    }
};

// The stock server vsftpd, anonymous and read-only, with its own configuration; the commands it
// receives go to its log.
class VsftpdServer final : public LocalServer
{
public:
    explicit VsftpdServer(const QString &root, int bytesPerSecond = 0)
        : LocalServer("/usr/sbin/vsftpd")
    {
        openToAll(root);
        const QString work = m_work.path();
        QDir(work).mkdir("empty");
        m_logFile = work + "/vsftpd.log";
        writeFile(
            work + "/vsftpd.conf",
            QStringLiteral("listen=YES\nlisten_address=127.0.0.1\nlisten_port=%1\nbackground=NO\n"
                           "anonymous_enable=YES\nanon_root=%2\nno_anon_password=YES\n"
                           "local_enable=NO\nwrite_enable=NO\nseccomp_sandbox=NO\n"
                           "secure_chroot_dir=%3/empty\nlog_ftp_protocol=YES\n"
                           "xferlog_enable=YES\nxferlog_std_format=NO\nvsftpd_log_file=%4\n"
                           "anon_max_rate=%5\n")
                .arg(m_port)
                .arg(root, work, m_logFile)
                .arg(bytesPerSecond)
                .toUtf8());
        m_process.setArguments({work + "/vsftpd.conf"});
    }
};

// The stock server proftpd, unpacked from its package into build/proftpd (it cannot be installed
// beside vsftpd): anonymous, and the user "ana" (password "se@c:reta") of a user file of its own.
class ProftpdServer final : public LocalServer
{
public:
    explicit ProftpdServer(const QString &root, int bytesPerSecond = 0)
        : LocalServer(qEnvironmentVariable("CORVANE_SOURCE_DIR") +
                      "/build/proftpd/usr/sbin/proftpd")
    {
        openToAll(root);
        const QString work = m_work.path();
        m_logFile = work + "/commands.log";
        // "se@c:reta", hashed as the user file wants it.
        const QString user = QStringLiteral("ana:$1$corvane$ckXw.rac2EO9TIGmqDagd0:65534:65534::%1:"
                                            "/bin/sh\nftp:*:65534:65534::%1:/bin/sh\n")
                                 .arg(root);
        const auto write = [&](const QString &name, const QString &text) {
            QFile file(work + '/' + name);
            if (file.open(QIODevice::WriteOnly))
                file.write(text.toUtf8());
            // It refuses user files others can read.
            file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
            return file.fileName();
        };
        write("passwd", user);
        write("group", "nogroup:*:65534:\n");
        const QString rate =
            bytesPerSecond ? QStringLiteral("TransferRate RETR %1\n").arg(bytesPerSecond / 1024.0)
                           : QString();
        const QString config = write(
            "proftpd.conf",
            QStringLiteral("ServerType standalone\nDefaultServer on\nPort %1\n"
                           "DefaultAddress 127.0.0.1\nSocketBindTight on\nUseIPv6 off\n"
                           "User nobody\nGroup nogroup\nPidFile %2/pid\nScoreboardFile %2/score\n"
                           "DelayTable none\nWtmpLog off\nUseReverseDNS off\n"
                           "AuthOrder mod_auth_file.c\nAuthUserFile %2/passwd\n"
                           "AuthGroupFile %2/group\nRequireValidShell off\nDefaultRoot ~\n"
                           "SystemLog %2/system.log\nExtendedLog %3 ALL\n%4"
                           "<Anonymous %5>\nUser ftp\nGroup nogroup\nUserAlias anonymous ftp\n"
                           "</Anonymous>\n")
                .arg(m_port)
                .arg(work, m_logFile, rate, root));
        m_process.setArguments({"-n", "-q", "-c", config});
    }
};
