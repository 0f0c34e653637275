#include "browserregistration.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSaveFile>
#include <QStandardPaths>

namespace BrowserRegistration {

namespace {

const QString Description = QStringLiteral("Corvane: recibe los enlaces de su extensión");

// For a POSIX shell: in single quotes, each quote closed, escaped and opened again.
QString quoted(const QString &text)
{
    return QLatin1Char('\'') + QString(text).replace(QLatin1Char('\''), QLatin1String("'\\''")) +
           QLatin1Char('\'');
}

QString save(const QString &path, const QByteArray &bytes, bool executable = false)
{
    QSaveFile file(path);
    if (!QDir().mkpath(QFileInfo(path).absolutePath()) || !file.open(QIODevice::WriteOnly) ||
        file.write(bytes) != bytes.size() || !file.commit())
        return QStringLiteral("No se puede escribir ") + path;
    if (executable)
        QFile::setPermissions(path, QFile::permissions(path) | QFile::ExeOwner | QFile::ExeGroup |
                                        QFile::ExeOther);
    return {};
}

QJsonObject manifest(const QString &hostPath)
{
    return {{QStringLiteral("name"), HostName},
            {QStringLiteral("description"), Description},
            {QStringLiteral("path"), hostPath},
            {QStringLiteral("type"), QStringLiteral("stdio")}};
}

} // namespace

QStringList chromiumExtensionIds()
{
    return QStringLiteral(CORVANE_CHROMIUM_EXTENSION_IDS).split(QLatin1Char(','));
}

QString firefoxExtensionId()
{
    return QStringLiteral(CORVANE_FIREFOX_EXTENSION_ID);
}

QJsonObject chromiumManifest(const QString &hostPath)
{
    QJsonArray origins;
    for (const QString &id : chromiumExtensionIds())
        origins.append(QString(QStringLiteral("chrome-extension://") + id + QLatin1Char('/')));
    QJsonObject result = manifest(hostPath);
    result.insert(QStringLiteral("allowed_origins"), origins);
    return result;
}

QJsonObject firefoxManifest(const QString &hostPath)
{
    QJsonObject result = manifest(hostPath);
    result.insert(QStringLiteral("allowed_extensions"), QJsonArray{firefoxExtensionId()});
    return result;
}

QString registerBrowsers(const QString &program, const QString &home, QStringList &written)
{
    const QString host = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) +
                         QStringLiteral("/corvane-native-host");
    QString command = QStringLiteral("exec ") + quoted(program);
    if (!home.isEmpty())
        command += QStringLiteral(" --home ") + quoted(QDir(home).absolutePath());
    const QByteArray script = "#!/bin/sh\n# Started by the browsers for Corvane's extension.\n" +
                              command.toUtf8() + " --native-host \"$@\"\n";
    const QString name = HostName + QStringLiteral(".json");
    const QList<std::pair<QString, QByteArray>> files{
        {host, script},
        {QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
             QStringLiteral("/chromium/NativeMessagingHosts/") + name,
         QJsonDocument(chromiumManifest(host)).toJson()},
        {QDir::homePath() + QStringLiteral("/.mozilla/native-messaging-hosts/") + name,
         QJsonDocument(firefoxManifest(host)).toJson()},
    };
    for (const auto &[path, bytes] : files) {
        if (QString error = save(path, bytes, path == host); !error.isEmpty())
            return error;
        written.append(path);
    }
    return {};
}

} // namespace BrowserRegistration
