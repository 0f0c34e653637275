#include "homepage.h"

#include <QDir>

QUrl homePage(const QString &folder)
{
    const QString chosen = qEnvironmentVariable("CORVANE_HOME_PAGE");
    return homePageOf(chosen.isEmpty() ? QStringLiteral(CORVANE_DEFAULT_HOME_PAGE) : chosen,
                      folder);
}

QUrl homePageOf(const QString &setting, const QString &folder)
{
    QUrl address(setting, QUrl::StrictMode);
    if (address.isValid() && !address.scheme().isEmpty())
        return address;
    return QUrl::fromLocalFile(QDir(folder).absoluteFilePath(setting));
}
