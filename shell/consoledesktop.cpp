#include "consoledesktop.h"

#include "systemcommands.h"

#include <cstdio>

ConsoleDesktop::ConsoleDesktop() : m_err(stderr)
{
    m_err.setEncoding(QStringConverter::System);
}

void ConsoleDesktop::say(const QString &text)
{
    QString line = text;
    line.replace(QLatin1String("\r\n"), QLatin1String(" "));
    // One event may reach both the status bar and a message window; it is said once.
    if (line == m_lastLine)
        return;
    m_lastLine = line;
    m_err << line << Qt::endl;
}

void ConsoleDesktop::messageBox(const QString &text, Icon, const QString &)
{
    say(text);
}

bool ConsoleDesktop::askYesNo(const QString &text)
{
    say(text + QStringLiteral(" [sin pantalla: No]"));
    return false;
}

std::optional<QString> ConsoleDesktop::inputBox(const QString &prompt, const QString &,
                                                const QString &)
{
    say(prompt + QStringLiteral(" [sin pantalla: cancelado]"));
    return std::nullopt;
}

QString ConsoleDesktop::openFileDialog(const QString &, const QString &)
{
    return {};
}

QString ConsoleDesktop::saveFileDialog(const QString &, const QString &)
{
    return {};
}

QString ConsoleDesktop::chooseFolder(const QString &)
{
    return {};
}

FtpCredentials ConsoleDesktop::askFtpLogin(const QString &caption, const FtpCredentials &initial)
{
    say(caption + QStringLiteral(" [sin pantalla: se mantienen el usuario ") + initial.usernm +
        QStringLiteral(" y su contraseña]"));
    return initial;
}

void ConsoleDesktop::playSound(const QString &) {}

void ConsoleDesktop::showMessageWindow(const QString &text, const QString &)
{
    say(text);
}

void ConsoleDesktop::raiseTrayIndicator(const QString &text)
{
    say(text);
}

void ConsoleDesktop::openFile(const QString &) {}

void ConsoleDesktop::openUrl(const QString &) {}

void ConsoleDesktop::startProgram(const QString &commandLine)
{
    startCommandLine(commandLine);
}

void ConsoleDesktop::powerOff()
{
    startPowerOff();
}

void ConsoleHistory::append(const QString &text, quint32)
{
    QString line = text;
    while (line.startsWith(QLatin1String("\r\n")))
        line.remove(0, 2);
    m_console.say(line);
}
