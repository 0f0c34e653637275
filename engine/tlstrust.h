#pragma once

#include <QList>
#include <QSslConfiguration>
#include <QSslError>
#include <QSslSocket>

// How a secure download checks its server: against the system's trusted authorities and those
// of the file named by the SSL_CERT_FILE environment variable, as other programs allow.
QSslConfiguration secureConfiguration();

// Why a server's certificate was refused, as a clause for the person: "ha caducado".
QString certificateProblem(const QList<QSslError> &errors);
