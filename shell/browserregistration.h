#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

// How the browsers find Corvane's native host: a manifest named after the host in a folder each
// browser reads, allowing only Corvane's extension and naming the program the browser starts.
// The package and `cmake --install` put them in the browsers' system folders;
// `corvane --register-browsers` puts them in the person's own folders, for a copy run from where
// it was built.
namespace BrowserRegistration {

inline const QString HostName = QStringLiteral("corvane");

QStringList chromiumExtensionIds();
QString firefoxExtensionId();
QJsonObject chromiumManifest(const QString &hostPath);
QJsonObject firefoxManifest(const QString &hostPath);

// Writes the script the browsers start, which runs `program` (with `--home home` when given) as
// the native host, and both manifests naming it; the files written go to `written`. Empty, or
// why a file could not be written.
QString registerBrowsers(const QString &program, const QString &home, QStringList &written);

} // namespace BrowserRegistration
