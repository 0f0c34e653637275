#include "headless.h"

#include "settings.h"
#include "stopsignals.h"
#include "texts.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QTimer>
#include <unistd.h>

Headless::Headless(const ProgramFolder &folder, const QStringList &urls, int speedLimit,
                   QObject *parent)
    : QObject(parent), m_urls(urls), m_speedLimit(speedLimit), m_console(m_desktop),
      m_core(folder, m_desktop, &m_console), m_out(stdout), m_terminal(::isatty(STDOUT_FILENO))
{
    m_out.setEncoding(QStringConverter::System);
    connect(new StopSignals(this), &StopSignals::received, this, &Headless::stopOnSignal);

    ActiveList &active = m_core.active();
    connect(&active, &ActiveList::statusText, this, [this](StatusPanel panel, const QString &text) {
        // The speeds change every second; the progress lines show them instead.
        if (panel != StatusPanel::Velmedia)
            m_desktop.say(text);
    });
    connect(&active, &ActiveList::added, this, &Headless::announceStart);
    connect(&active, &ActiveList::downloadFinished, this, [this](const QString &path) {
        if (!m_terminal)
            m_out << "Terminada: " << path << Qt::endl;
    });
    connect(&active, &ActiveList::downloadFailed, this, [this](const QString &url) {
        m_failed = true;
        if (!m_terminal)
            m_out << "Fallida: " << url << Qt::endl;
    });
    // Finished downloads leave the list so that queued ones find a place.
    connect(
        &active, &ActiveList::downloadFinished, this, [&active] { active.delend(); },
        Qt::QueuedConnection);
    connect(&active, &ActiveList::removed, this, &Headless::check, Qt::QueuedConnection);
    connect(&active, &ActiveList::changed, this, &Headless::check, Qt::QueuedConnection);
    connect(&active, &ActiveList::progressed, this, &Headless::drawProgress);
}

int Headless::exec()
{
    QTimer::singleShot(0, this, &Headless::startUp);
    return QCoreApplication::exec();
}

void Headless::startUp()
{
    m_core.load();
    if (m_speedLimit >= 0)
        m_core.active().setSpeedLimit(m_speedLimit);
    for (const QString &url : std::as_const(m_urls)) {
        if (m_core.quickAdd().add(url).isEmpty())
            m_failed = true;
    }
    m_core.active().startTimers();
    check();
}

bool Headless::queueHasWork() const
{
    const InactiveList &inactive = m_core.inactive();
    for (int i = 1; i <= inactive.highestIndex(); ++i) {
        if (inactive.existe(i) && !inactive.registro(i).locked)
            return true;
    }
    return false;
}

void Headless::pullWhileRoom()
{
    InactiveList &inactive = m_core.inactive();
    while (queueHasWork() && m_core.active().rowCount() < m_core.settings().settings().maxdescval) {
        const int queued = inactive.rowCount();
        inactive.toactivas();
        if (inactive.rowCount() == queued)
            break;
    }
}

bool Headless::anyRunning() const
{
    const ActiveList &active = m_core.active();
    for (int i = 1; i <= active.highestIndex(); ++i) {
        const DownloadStatus status = active.slot(i).status;
        if (active.existe(i) && status != DownloadStatus::Finished &&
            status != DownloadStatus::Exhausted)
            return true;
    }
    return false;
}

void Headless::announceStart(int index)
{
    const DownloadSlot &slot = m_core.active().slot(index);
    if (!m_terminal)
        m_out << "Iniciada: " << slot.Data << " -> " << slot.path << Qt::endl;
}

void Headless::check()
{
    if (m_ending)
        return;
    pullWhileRoom();
    if (!anyRunning() && !queueHasWork())
        end(m_failed ? 1 : 0);
}

void Headless::drawProgress()
{
    if (!m_terminal)
        return;
    const ActiveList &active = m_core.active();
    QStringList lines;
    for (int i = 1; i <= active.highestIndex(); ++i) {
        const DownloadSlot &slot = active.slot(i);
        if (!active.existe(i) || slot.status == DownloadStatus::Finished)
            continue;
        const QString percent =
            slot.total > 0 ? decimalText(double(slot.bytes - 1) * 100.0 / double(slot.total)) +
                                 QLatin1Char('%')
                           : QStringLiteral("?");
        const QString left =
            slot.total > 0 && slot.velocidad >= 1
                ? elapsedText(qint64(double(slot.total - slot.bytes) / 1024.0 / slot.velocidad))
                : QStringLiteral("*");
        lines << QFileInfo(slot.path).fileName() + QStringLiteral("  ") + active.row(i).bytes +
                     QStringLiteral("  ") + percent + QStringLiteral("  ") +
                     QString::number(slot.velocidad) + QStringLiteral(" Kb/seg  ") + left;
    }
    // Redraw the block of progress lines in place.
    if (m_progressLines > 0)
        m_out << "\x1b[" << m_progressLines << "F";
    for (const QString &line : std::as_const(lines))
        m_out << "\x1b[2K" << line << '\n';
    for (int i = int(lines.size()); i < m_progressLines; ++i)
        m_out << "\x1b[2K\n";
    m_progressLines = std::max(m_progressLines, int(lines.size()));
    m_out.flush();
}

void Headless::stopOnSignal()
{
    m_desktop.say(QStringLiteral("Interrumpido: las descargas continuarán la próxima vez."));
    m_failed = true;
    end(1);
}

void Headless::end(int status)
{
    m_ending = true;
    m_core.save();
    QCoreApplication::exit(status);
}
