#pragma once

#include "commandline.h"

// The two ways the program runs. `main` picks one; both first make sure the program folder can
// be written and is not in use by another Corvane.
int runWindows(int argc, char *argv[], const CommandLine &command);
int runHeadless(int argc, char *argv[], const CommandLine &command);
// What the browsers use: the extension's host (--native-host), and the manifests that name it
// (--register-browsers).
int runForBrowsers(int argc, char *argv[], const CommandLine &command);

namespace Startup {

// Exit statuses beside 0 and the headless mode's 1 (a download failed).
inline constexpr int CannotWrite = 1;
inline constexpr int UsageError = 2;
inline constexpr int AlreadyRunning = 3;

// The program folder of this run; made on first start.
ProgramFolder folderOf(const CommandLine &command);
// Why the program cannot run on `folder`, or an empty text when it can be written.
QString unwritable(const ProgramFolder &folder);
QString alreadyRunning(const ProgramFolder &folder);

} // namespace Startup
