#pragma once

#include <QByteArrayList>

// Prepares the web engine of the browser window. Call it in main() before the QApplication
// exists: it lets the engine run as root (without its sandbox, which refuses root), has it draw
// in software, sets what it needs of the application and registers the schemes of
// takenSchemes().
void prepareBrowser();

// The address schemes the browser window takes over: "zelq" (add a download) and "newwin"
// (open in the system's browser). Registered, their links reach the navigation check whole.
QByteArrayList takenSchemes();
