#include "linkgrabber.h"

#include "desktop.h"
#include "failure.h"
#include "linkextraction.h"
#include "placement.h"
#include "settings.h"
#include "urls.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace {

bool isWebAddress(const QString &text)
{
    return text.startsWith(QLatin1String("http://")) || text.startsWith(QLatin1String("https://"));
}

} // namespace

LinkGrabber::LinkGrabber(ActiveList &active, InactiveList &inactive, const Settings &settings,
                         Desktop &desktop, const ProgramFolder &folder, QObject *parent)
    : QObject(parent), m_active(active), m_inactive(inactive), m_settings(settings),
      m_desktop(desktop), m_folder(folder), m_notifier(settings, desktop, folder)
{
    connect(&m_fetch, &PageFetch::finished, this, &LinkGrabber::fetchFinished);
    connect(&m_fetch, &PageFetch::cutShort, this, &LinkGrabber::fetchCutShort);
    connect(&m_fetch, &PageFetch::failed, this, &LinkGrabber::fetchFailed);
}

void LinkGrabber::load(const QString &clipboard)
{
    unload();
    m_caption = Caption;
    m_direccEnabled = m_obtenerEnabled = true;
    m_extract = Extract::linkonly;
    m_si.clear();
    m_no.clear();
    m_destdir = m_settings.defdir;
    if (!m_destdir.endsWith(QDir::separator()))
        m_destdir += QDir::separator();
    m_ext = builtInEndings();
    const QString file = m_folder.file(EndingsFile);
    if (QFileInfo::exists(file)) {
        try {
            // The file keeps the whole list, built-in endings included, and all of it follows
            // the built-in ones.
            m_ext += readEndings(file);
        } catch (const Failure &failure) {
            m_desktop.messageBox(failure.description(), Desktop::Icon::Critical);
        }
    }
    m_direcc = isWebAddress(clipboard) ? clipboard : QString();
    Q_EMIT changed();
}

void LinkGrabber::unload()
{
    ++m_session;
    m_fetch.stop();
    m_scanning = false;
}

void LinkGrabber::setDirecc(const QString &text)
{
    m_direcc = text;
    Q_EMIT changed();
}

void LinkGrabber::setExtract(Extract extract)
{
    m_extract = extract;
    Q_EMIT changed();
}

void LinkGrabber::setDestdir(const QString &folder)
{
    m_destdir = folder;
    Q_EMIT changed();
}

void LinkGrabber::obtener()
{
    m_direccEnabled = false;
    m_si.clear();
    m_no.clear();
    try {
        if (m_fetch.start(m_direcc, m_desktop))
            m_obtenerEnabled = false;
        else
            m_direccEnabled = true;
    } catch (const Failure &failure) {
        m_direccEnabled = true;
        m_desktop.messageBox(failure.description(), Desktop::Icon::Critical);
    }
    Q_EMIT changed();
}

void LinkGrabber::fetchFinished()
{
    showResults(true);
}

void LinkGrabber::fetchCutShort(const QString &reason)
{
    // The window may be closed while the message is on screen.
    const quint64 session = m_session;
    m_desktop.messageBox(reason, Desktop::Icon::Exclamation);
    if (session == m_session)
        showResults(false);
}

void LinkGrabber::fetchFailed(const QString &description)
{
    m_notifier.playSound(QStringLiteral("ding.wav"));
    m_notifier.message(description, QStringLiteral("error.gif"));
    // The address is given back too, so that the person can correct it.
    enableFetching();
}

void LinkGrabber::showResults(bool mayRetry)
{
    const quint64 session = m_session;
    getlinks();
    if (session != m_session)
        return;
    enableFetching();
    if (!m_si.isEmpty() || !m_no.isEmpty())
        return;
    // An address such as http://host/dir may name a folder: it is tried once more as dir/.
    if (mayRetry && !m_direcc.endsWith(QLatin1Char('/')) &&
        ExtensionOf(FileNameOf(m_direcc)).isEmpty()) {
        m_direcc += QLatin1Char('/');
        obtener();
        return;
    }
    m_caption = QStringLiteral("No se han encontrado resultados");
    Q_EMIT changed();
}

void LinkGrabber::enableFetching()
{
    m_obtenerEnabled = true;
    m_direccEnabled = true;
    Q_EMIT changed();
}

void LinkGrabber::getlinks()
{
    const quint64 session = m_session;
    const QString base = GetMainWeb(m_direcc);
    if (m_extract != Extract::imgonly)
        Add_Link(QStringLiteral("a href="), base);
    if (m_extract != Extract::linkonly && session == m_session)
        Add_Link(QStringLiteral("img src="), base);
}

void LinkGrabber::Add_Link(const QString &pattern, const QString &base)
{
    const quint64 session = m_session;
    LinkScanner scanner(m_fetch.code(), pattern, base);
    m_scanning = true;
    try {
        while (std::optional<QString> address = scanner.next()) {
            (SearchExtension(*address, m_ext) ? m_no : m_si).append(*address);
            m_caption = QString::number(m_si.size() + m_no.size()) +
                        QStringLiteral(" direcciones encontradas");
            Q_EMIT changed();
            QCoreApplication::processEvents();
            if (session != m_session)
                return;
        }
    } catch (const Failure &failure) {
        m_desktop.messageBox(failure.description(), Desktop::Icon::Critical);
    }
    m_scanning = false;
    Q_EMIT changed();
}

void LinkGrabber::tosi(int row)
{
    if (moveEntry(m_no, row, m_si))
        Q_EMIT changed();
}

void LinkGrabber::tono(int row)
{
    if (moveEntry(m_si, row, m_no))
        Q_EMIT changed();
}

void LinkGrabber::adext()
{
    const std::optional<QString> answer = m_desktop.inputBox(
        QStringLiteral("Escriba la extensión del archivo (exe, zip, gif) con o sin puntos."),
        QString());
    if (!answer || answer->isEmpty())
        return;
    m_ext.append(*answer);
    Q_EMIT changed();
}

void LinkGrabber::delext(int row)
{
    if (row < 0 || row >= m_ext.size())
        return;
    m_ext.removeAt(row);
    Q_EMIT changed();
}

void LinkGrabber::brdir()
{
    const QString folder = m_desktop.chooseFolder(m_destdir);
    if (!folder.isEmpty())
        setDestdir(folder);
}

void LinkGrabber::addtolist()
{
    for (const QString &address : std::as_const(m_si)) {
        const QString path = inFolder(m_destdir, FileNameOf(address));
        if (placeDownload(m_active, m_inactive, m_settings, address, path) == Placed::Nowhere) {
            // Nothing can make room while this runs: the remaining addresses would all fail.
            m_desktop.messageBox(QStringLiteral("Se ha alcanzado el máximo de descargas en cola."),
                                 Desktop::Icon::Critical);
            break;
        }
    }
    saveEndings();
    unload();
}

void LinkGrabber::saveEndings()
{
    try {
        writeEndings(m_folder.file(EndingsFile), m_ext);
    } catch (const Failure &failure) {
        m_desktop.messageBox(failure.description(), Desktop::Icon::Critical);
    }
}
