#pragma once

#include <QIcon>

// The program's icons: the desktop theme's when it has one, else the program's own drawing, so
// a machine without an icon theme shows them too. Names are those of the table in icons.cpp
// ("detener", "pausar", ...); an unknown name gives an empty icon.
QIcon corvaneIcon(const QString &name);
