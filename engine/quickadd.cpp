#include "quickadd.h"

#include "activelist.h"
#include "desktop.h"
#include "historysink.h"
#include "inactivelist.h"
#include "settings.h"
#include "textfile.h"
#include "urls.h"

#include <QDir>
#include <QFile>

QuickAdd::QuickAdd(ActiveList &active, InactiveList &inactive, const Settings &settings,
                   Desktop &desktop, HistorySink &history)
    : m_active(active), m_inactive(inactive), m_settings(settings), m_desktop(desktop),
      m_history(history)
{}

QString QuickAdd::add(const QString &url)
{
    // Exact and case-sensitive, as typed. The message still names the two original schemes.
    if (!url.startsWith(QLatin1String("ftp://")) && !url.startsWith(QLatin1String("http://")) &&
        !url.startsWith(QLatin1String("https://"))) {
        m_desktop.messageBox(
            QStringLiteral("Escriba una dirección correcta (debe empezar por http:// o ftp://)"),
            Desktop::Icon::Critical);
        return {};
    }
    QString folder = m_settings.defdir;
    if (!folder.endsWith(QDir::separator()))
        folder += QDir::separator();
    const QString path = folder + FileNameOf(url);
    if (QFile::exists(path)) {
        if (!m_desktop.askYesNo(
                QStringLiteral("El archivo indicado ya existe. ¿Desea sobreescribirlo?")))
            return {};
        QFile::remove(path);
    }
    const QString user = QStringLiteral("anonymous");
    const QString password = QStringLiteral("freepwd");
    // The row count includes the template row, so at most `maxdesc` - 1 run at once.
    if (leadingNumber(m_settings.maxdesc) > m_active.rowCount()) {
        if (!m_active.addnew(url, path, 0, 0, false, 0, false, user, password, false))
            return {};
    } else if (m_inactive.highestIndex() >= 39) {
        m_desktop.messageBox(QStringLiteral("Ya se ha superado el máximo de descargas."),
                             Desktop::Icon::Critical);
        return {};
    } else {
        m_inactive.addnew(url, path, 0, 0, false, 0, false, user, password, false, false);
    }
    m_history.append(QStringLiteral("\r\nDescargando ") + url + QStringLiteral(" a ") + path,
                     HistoryColour::Black);
    return path;
}
