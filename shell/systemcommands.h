#pragma once

#include <QString>

// Programs the desktop starts: a command line (e.g. the antivirus with a file), and power-off.
void startCommandLine(const QString &commandLine);
void startPowerOff();
