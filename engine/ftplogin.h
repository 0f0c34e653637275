#pragma once

#include <QString>
#include <optional>

// What the FTP login dialog holds. A new dialog starts with the anonymous login.
struct FtpCredentials
{
    QString usernm = QStringLiteral("anonymous");
    QString passw = QStringLiteral("freepwd");
    bool rememb = false;
};

inline const QString LoginCaption = QStringLiteral("Usuario/Contraseña");
inline const QString WrongUserCaption = QStringLiteral("Usuario incorrecto.");

class Desktop;
class Notifier;

// The one login dialog of the program, asked again when a server refuses a login. While it is
// open for one download, a refusal for another is left to that download's next retry.
class FtpLoginPrompt
{
public:
    FtpLoginPrompt(Desktop &desktop, Notifier &notifier) : m_desktop(desktop), m_notifier(notifier)
    {}

    // What the person leaves in the dialog, shown with `current`; nullopt while it is open for
    // another download. Other downloads keep running while the person answers.
    std::optional<FtpCredentials> askAgain(const FtpCredentials &current);

private:
    Desktop &m_desktop;
    Notifier &m_notifier;
    bool m_open = false;
};
