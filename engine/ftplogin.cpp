#include "ftplogin.h"

#include "desktop.h"
#include "notifier.h"

std::optional<FtpCredentials> FtpLoginPrompt::askAgain(const FtpCredentials &current)
{
    if (m_open)
        return std::nullopt;
    m_open = true;
    m_notifier.playSound(QStringLiteral("user.wav"));
    const FtpCredentials answer = m_desktop.askFtpLogin(WrongUserCaption, current);
    m_open = false;
    return answer;
}
