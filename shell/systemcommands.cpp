#include "systemcommands.h"

#include <QProcess>

void startCommandLine(const QString &commandLine)
{
    QStringList arguments = QProcess::splitCommand(commandLine);
    if (arguments.isEmpty())
        return;
    const QString program = arguments.takeFirst();
    QProcess::startDetached(program, arguments);
}

void startPowerOff()
{
    QProcess::startDetached(QStringLiteral("systemctl"), {QStringLiteral("poweroff")});
}
