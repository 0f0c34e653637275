#include "quickadd.h"

#include "activelist.h"
#include "desktop.h"
#include "failure.h"
#include "historysink.h"
#include "inactivelist.h"
#include "settings.h"
#include "textfile.h"
#include "urls.h"

#include <QDir>
#include <QFile>
#include <algorithm>

namespace {

// Exact and case-sensitive, as typed.
bool isAddress(const QString &text)
{
    return text.startsWith(QLatin1String("http://")) ||
           text.startsWith(QLatin1String("https://")) || text.startsWith(QLatin1String("ftp://"));
}

bool hasControlCharacters(const QString &text)
{
    return std::any_of(text.begin(), text.end(),
                       [](QChar c) { return c.unicode() < 0x20 || c.unicode() == 0x7F; });
}

// What was typed or pasted, as an address: blanks around it dropped, blanks inside it written
// as the request line needs them (the file name turns them back into blanks).
QString typed(const QString &text)
{
    return text.trimmed().replace(QLatin1Char(' '), QLatin1String("%20"));
}

} // namespace

QuickAdd::QuickAdd(ActiveList &active, InactiveList &inactive, const Settings &settings,
                   Desktop &desktop, HistorySink &history)
    : m_active(active), m_inactive(inactive), m_settings(settings), m_desktop(desktop),
      m_history(history)
{}

QString QuickAdd::add(const QString &text, const DownloadExtras &extras)
{
    const QString url = typed(text);
    // The message names http:// and ftp:// only, though https:// is taken as well.
    if (!isAddress(url)) {
        m_desktop.messageBox(
            QStringLiteral("Escriba una dirección correcta (debe empezar por http:// o ftp://)"),
            Desktop::Icon::Critical);
        return {};
    }
    return place(url, FtpCredentials(), QStringLiteral("Ya se ha superado el máximo de descargas."),
                 extras);
}

QString QuickAdd::newurl(const QString &clipboard)
{
    const std::optional<QString> answer =
        m_desktop.inputBox(QStringLiteral("Escriba aquí la dirección del archivo"),
                           isAddress(clipboard) ? clipboard : QString());
    if (!answer)
        return {};
    QString url;
    try {
        url = ResolveDots(typed(*answer));
    } catch (const Failure &) {
        // An address that climbs above its host is no address at all.
    }
    if (!isAddress(url)) {
        m_desktop.messageBox(QStringLiteral("Debe escribir una dirección web correcta (debe "
                                            "empezar por http:// o ftp://)"),
                             Desktop::Icon::Critical);
        return {};
    }
    FtpCredentials login{QString(), QString(), false};
    // An address with its own login needs no other.
    if (url.startsWith(QLatin1String("ftp://")) && SplitLogin(url).address == url)
        login = m_desktop.askFtpLogin(LoginCaption, FtpCredentials());
    return place(url, login,
                 QStringLiteral("Ya se ha alcanzado el máximo posible de descargas en cola."));
}

QString QuickAdd::place(const QString &url, const FtpCredentials &login, const QString &queueFull,
                        const DownloadExtras &extras)
{
    // A line break would split the address over two lines of the list files.
    if (hasControlCharacters(url)) {
        m_desktop.messageBox(QStringLiteral("La dirección contiene caracteres no válidos."),
                             Desktop::Icon::Critical);
        return {};
    }
    QString folder = m_settings.defdir;
    if (!folder.endsWith(QDir::separator()))
        folder += QDir::separator();
    // The list takes a login out of the address; the history never shows it.
    const QString shown = SplitLogin(url).address;
    QString path = folder + FileNameOf(shown);
    if (QFile::exists(path)) {
        if (!m_desktop.askYesNo(
                QStringLiteral("El archivo indicado ya existe. ¿Desea sobreescribirlo?")))
            return {};
        // Deleted now, before the download is known to start.
        QFile::remove(path);
    }
    const ListRecord download{.Data = url,
                              .path = path,
                              .usernm = login.usernm,
                              .passw = login.passw,
                              .rememb = login.rememb,
                              .extras = extras};
    // The row count includes the unused slot 0, so at most `maxdesc` - 1 run at once.
    if (leadingNumber(m_settings.maxdesc) > m_active.rowCount()) {
        if (!m_active.addnew(download))
            return {};
    } else if (m_inactive.highestIndex() >= 39) {
        m_desktop.messageBox(queueFull, Desktop::Icon::Critical);
        return {};
    } else {
        m_inactive.addnew(download);
    }
    m_history.append(QStringLiteral("\r\nDescargando ") + shown + QStringLiteral(" a ") + path,
                     HistoryColour::Black);
    return path;
}
