#pragma once

#include <QUrl>

// The browser's home page: the environment variable CORVANE_HOME_PAGE when it is set, else the
// page chosen when building (the program's own start page). An address is used as it is; a file
// name is looked up in `folder`, the folder that holds the program's files.
QUrl homePage(const QString &folder);
QUrl homePageOf(const QString &setting, const QString &folder);
