#pragma once

#include <QString>

class Desktop;

// Parts of a download address (http://, https:// or ftp://, exact case). Only HostOf talks to
// the user; PortOf and ResolveDots throw Failure on malformed input, which the caller's own
// error handling reports.
QString HostOf(const QString &url, Desktop &desktop);
quint16 PortOf(const QString &url);
// What the Host line of a request names: the host as written (an IPv6 literal in its brackets),
// followed by ":port" when the address names a port other than its scheme's own.
QString HostLineOf(const QString &url);
QString PathOf(const QString &url);
QString FileNameOf(const QString &url);
QString ResolveDots(const QString &url);
void Reemplazar(QString &text, const QString &search, const QString &replacement);
QString ExtensionOf(const QString &name);

inline const QString HostError = QStringLiteral("ERROR");
