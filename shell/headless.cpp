#include "headless.h"

#include "texts.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QSocketNotifier>
#include <QTimer>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

int signalPipe[2] = {-1, -1};

void onSignal(int)
{
    const char byte = 1;
    [[maybe_unused]] const auto written = ::write(signalPipe[1], &byte, 1);
}

RowFactory plainRows()
{
    return [](int) { return std::make_unique<RowState>(); };
}

} // namespace

Headless::Headless(const ProgramFolder &folder, const QStringList &urls, QObject *parent)
    : QObject(parent), m_urls(urls), m_console(m_desktop), m_history(m_console),
      m_settings(folder, m_desktop, m_history), m_log(m_settings.settings(), m_desktop),
      m_inactive(m_settings.settings(), m_desktop, m_history, folder, plainRows()),
      m_active(m_settings.settings(), m_desktop, m_history, folder, plainRows()),
      m_quick(m_active, m_inactive, m_settings.settings(), m_desktop, m_history), m_out(stdout),
      m_terminal(::isatty(STDOUT_FILENO))
{
    m_out.setEncoding(QStringConverter::System);
    m_history.setLog(&m_log);
    m_active.setInactiveList(&m_inactive);
    m_inactive.setActiveList(&m_active);

    // SIGINT and SIGTERM reach the event loop through a pipe, so they stop between events.
    if (::pipe2(signalPipe, O_CLOEXEC | O_NONBLOCK) == 0) {
        m_signals = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, this);
        connect(m_signals, &QSocketNotifier::activated, this, &Headless::stopOnSignal);
        struct sigaction action = {};
        action.sa_handler = onSignal;
        sigaction(SIGINT, &action, nullptr);
        sigaction(SIGTERM, &action, nullptr);
    }

    connect(&m_active, &ActiveList::statusText, this,
            [this](StatusPanel panel, const QString &text) {
                // The speed panel changes every second; the progress lines show it instead.
                if (panel != StatusPanel::Velmedia)
                    m_desktop.say(text);
            });
    connect(&m_active, &ActiveList::downloadFinished, this, [this](const QString &path) {
        if (!m_terminal)
            m_out << "Terminada: " << path << Qt::endl;
    });
    connect(&m_active, &ActiveList::downloadFailed, this, [this](const QString &url) {
        m_failed = true;
        if (!m_terminal)
            m_out << "Fallida: " << url << Qt::endl;
    });
    // Finished rows leave the list so that queued downloads find a place.
    connect(
        &m_active, &ActiveList::downloadFinished, this, [this] { m_active.delend(); },
        Qt::QueuedConnection);
    connect(&m_active, &ActiveList::rowsChanged, this, &Headless::check, Qt::QueuedConnection);
    connect(&m_active, &ActiveList::totalSpeed, this, [this] {
        drawProgress();
        check();
    });
}

Headless::~Headless()
{
    if (m_signals) {
        std::signal(SIGINT, SIG_DFL);
        std::signal(SIGTERM, SIG_DFL);
        ::close(signalPipe[0]);
        ::close(signalPipe[1]);
    }
}

int Headless::exec()
{
    QTimer::singleShot(0, this, &Headless::startUp);
    return QCoreApplication::exec();
}

void Headless::startUp()
{
    m_settings.load();
    m_log.open();
    m_inactive.load();
    m_active.load();
    for (const QString &url : std::as_const(m_urls)) {
        if (m_quick.add(url).isEmpty())
            m_failed = true;
    }
    m_active.startTimers();
    check();
}

bool Headless::queueHasWork() const
{
    for (int i = 1; i <= m_inactive.highestIndex(); ++i) {
        if (m_inactive.existe(i) && !m_inactive.registro(i).locked)
            return true;
    }
    return false;
}

void Headless::pullWhileRoom()
{
    while (queueHasWork() && m_active.rowCount() < m_settings.settings().maxdescval) {
        const int queued = m_inactive.rowCount();
        m_inactive.toactivas();
        if (m_inactive.rowCount() == queued)
            break;
    }
}

bool Headless::anyRunning()
{
    for (int i = 1; i <= m_active.highestIndex(); ++i) {
        const DownloadRow *row = m_active.rowAt(i);
        if (m_active.existe(i) && row && !row->finalizado() && !row->redoend())
            return true;
    }
    return false;
}

void Headless::announceStarts()
{
    for (int i = 1; i <= m_active.highestIndex(); ++i) {
        const DownloadSlot &slot = m_active.slotAt(i);
        const QString key = QString::number(i) + QLatin1Char(' ') + slot.path;
        if (!m_active.existe(i) || m_announced.contains(key))
            continue;
        m_announced.insert(key);
        if (!m_terminal)
            m_out << "Iniciada: " << slot.Data << " -> " << slot.path << Qt::endl;
    }
}

void Headless::check()
{
    if (m_ending)
        return;
    pullWhileRoom();
    announceStarts();
    if (!anyRunning() && !queueHasWork())
        end(m_failed ? 1 : 0);
}

void Headless::drawProgress()
{
    if (!m_terminal)
        return;
    QStringList lines;
    for (int i = 1; i <= m_active.highestIndex(); ++i) {
        const DownloadRow *row = m_active.rowAt(i);
        if (!m_active.existe(i) || !row || row->finalizado())
            continue;
        const DownloadSlot &slot = m_active.slotAt(i);
        const QString percent =
            slot.total > 0 ? decimalText(double(slot.bytes - 1) * 100.0 / double(slot.total)) +
                                 QLatin1Char('%')
                           : QStringLiteral("?");
        const QString left =
            slot.total > 0 && slot.velocidad >= 1
                ? elapsedText(qint64(double(slot.total - slot.bytes) / 1024.0 / slot.velocidad))
                : QStringLiteral("*");
        lines << QFileInfo(slot.path).fileName() + QStringLiteral("  ") + row->bytes() +
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
    char bytes[16];
    while (::read(signalPipe[0], bytes, sizeof bytes) > 0) {
    }
    m_desktop.say(QStringLiteral("Interrumpido: las descargas continuarán la próxima vez."));
    m_failed = true;
    end(1);
}

void Headless::end(int status)
{
    m_ending = true;
    m_active.stopAll();
    m_active.guardar_lista_activas();
    m_inactive.guardar_lista_inactivas();
    m_log.close();
    QCoreApplication::exit(status);
}
