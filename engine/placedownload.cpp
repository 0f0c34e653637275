#include "placedownload.h"

#include "activelist.h"
#include "desktop.h"
#include "historysink.h"
#include "inactivelist.h"
#include "settings.h"
#include "textfile.h"
#include "urls.h"

#include <QDir>
#include <QFile>

QString PlaceDownload::operator()(const QString &url, const FtpCredentials &login,
                                  const QString &queueFull) const
{
    QString folder = settings.defdir;
    if (!folder.endsWith(QDir::separator()))
        folder += QDir::separator();
    const QString path = folder + FileNameOf(url);
    if (QFile::exists(path)) {
        if (!desktop.askYesNo(
                QStringLiteral("El archivo indicado ya existe. ¿Desea sobreescribirlo?")))
            return {};
        // Deleted now, before the download is known to start.
        QFile::remove(path);
    }
    // The row count includes the template row, so at most `maxdesc` - 1 run at once.
    if (leadingNumber(settings.maxdesc) > active.rowCount()) {
        if (!active.addnew(url, path, 0, 0, false, 0, false, login.usernm, login.passw,
                           login.rememb))
            return {};
    } else if (inactive.highestIndex() >= 39) {
        desktop.messageBox(queueFull, Desktop::Icon::Critical);
        return {};
    } else {
        inactive.addnew(url, path, 0, 0, false, 0, false, login.usernm, login.passw, login.rememb,
                        false);
    }
    history.append(QStringLiteral("\r\nDescargando ") + url + QStringLiteral(" a ") + path,
                   HistoryColour::Black);
    return path;
}
