#pragma once

#include <QString>

// The program's version as its windows show it: major.minor, " Compilación " and the build
// number ("0.1 Compilación 0").
QString versionText();
