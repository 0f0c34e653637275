#include "fakedesktop.h"

namespace {

QString iconName(Desktop::Icon icon)
{
    switch (icon) {
    case Desktop::Icon::Critical:
        return QStringLiteral("Critical");
    case Desktop::Icon::Question:
        return QStringLiteral("Question");
    case Desktop::Icon::Exclamation:
        return QStringLiteral("Exclamation");
    case Desktop::Icon::Information:
        return QStringLiteral("Information");
    }
    return {};
}

} // namespace

QStringList FakeDesktop::callsOf(const QString &kind) const
{
    QStringList found;
    for (const QString &call : calls) {
        if (call.startsWith(kind + QLatin1Char('|')))
            found.append(call.mid(kind.size() + 1));
    }
    return found;
}

void FakeDesktop::messageBox(const QString &text, Icon icon, const QString &title)
{
    calls.append(QStringLiteral("messageBox|") + iconName(icon) + QLatin1Char('|') + text +
                 (title.isEmpty() ? QString() : QLatin1Char('|') + title));
}

bool FakeDesktop::askYesNo(const QString &text)
{
    calls.append(QStringLiteral("askYesNo|") + text);
    if (whileAsking)
        whileAsking();
    if (yesNoAnswers.empty())
        return false;
    const bool answer = yesNoAnswers.front();
    yesNoAnswers.pop_front();
    return answer;
}

std::optional<QString> FakeDesktop::inputBox(const QString &prompt, const QString &initial,
                                             const QString &title)
{
    calls.append(QStringLiteral("inputBox|") + prompt + QLatin1Char('|') + initial +
                 (title.isEmpty() ? QString() : QLatin1Char('|') + title));
    if (inputAnswers.empty())
        return std::nullopt;
    const bool cancelled = !inputAnswers.front().has_value();
    const QString text = inputAnswers.front().value_or(QString());
    inputAnswers.pop_front();
    if (cancelled)
        return std::nullopt;
    return text;
}

QString FakeDesktop::nextFile()
{
    if (fileAnswers.empty())
        return {};
    QString answer = fileAnswers.front();
    fileAnswers.pop_front();
    return answer;
}

QString FakeDesktop::openFileDialog(const QString &initial, const QString &filter)
{
    calls.append(QStringLiteral("openFileDialog|") + initial + QLatin1Char('|') + filter);
    return nextFile();
}

QString FakeDesktop::saveFileDialog(const QString &initial, const QString &filter)
{
    calls.append(QStringLiteral("saveFileDialog|") + initial + QLatin1Char('|') + filter);
    return nextFile();
}

QString FakeDesktop::chooseFolder(const QString &initial)
{
    calls.append(QStringLiteral("chooseFolder|") + initial);
    return nextFile();
}

FtpCredentials FakeDesktop::askFtpLogin(const QString &caption, const FtpCredentials &initial)
{
    calls.append(QStringLiteral("askFtpLogin|") + caption + QLatin1Char('|') + initial.usernm +
                 QLatin1Char('|') + initial.passw);
    if (whileAsking)
        whileAsking();
    if (loginAnswers.empty())
        return initial;
    FtpCredentials answer = loginAnswers.front();
    loginAnswers.pop_front();
    return answer;
}

void FakeDesktop::playSound(const QString &path)
{
    calls.append(QStringLiteral("playSound|") + path);
}

void FakeDesktop::showMessageWindow(const QString &text, const QString &imagePath)
{
    calls.append(QStringLiteral("showMessageWindow|") + text + QLatin1Char('|') + imagePath);
}

void FakeDesktop::raiseTrayIndicator(const QString &text)
{
    calls.append(QStringLiteral("raiseTrayIndicator|") + text);
}

void FakeDesktop::openFile(const QString &path)
{
    calls.append(QStringLiteral("openFile|") + path);
}

void FakeDesktop::openUrl(const QString &url)
{
    calls.append(QStringLiteral("openUrl|") + url);
}

void FakeDesktop::startProgram(const QString &commandLine)
{
    calls.append(QStringLiteral("startProgram|") + commandLine);
}

void FakeDesktop::powerOff()
{
    calls.append(QStringLiteral("powerOff"));
}
