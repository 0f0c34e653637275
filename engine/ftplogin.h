#pragma once

#include <QString>

// What the FTP login dialog holds. A new dialog starts with the anonymous login.
struct FtpCredentials
{
    QString usernm = QStringLiteral("anonymous");
    QString passw = QStringLiteral("freepwd");
    bool rememb = false;
};

inline const QString LoginCaption = QStringLiteral("Usuario/Contraseña");
inline const QString WrongUserCaption = QStringLiteral("Usuario incorrecto.");
