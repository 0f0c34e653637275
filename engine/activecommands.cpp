// The commands of the active list's toolbar and what the window shows of the selected download.
#include "activelist.h"
#include "desktop.h"
#include "historysink.h"
#include "inactivelist.h"
#include "settings.h"
#include "texts.h"

#include <QTime>
#include <cmath>

namespace {

QString timeOfDay()
{
    return QTime::currentTime().toString(QStringLiteral("HH:mm:ss"));
}

} // namespace

ActiveCommands ActiveList::enabledCommands() const
{
    ActiveCommands commands;
    if (!existe(m_selected))
        return commands;
    const DownloadStatus status = m_slots[m_selected].record.status;
    const bool finished = status == DownloadStatus::Finished;
    commands.open = commands.antivirus = finished;
    commands.detener = commands.pausar = !finished;
    commands.continuar = status == DownloadStatus::Exhausted;
    commands.propiedades = true;
    return commands;
}

std::optional<DownloadInfo> ActiveList::detallado(int index) const
{
    if (!existe(index))
        return std::nullopt;
    const DownloadSlot &record = m_slots[index].record;
    QString estado;
    switch (record.status) {
    case DownloadStatus::Finished:
        estado = DownloadState::Finished;
        break;
    case DownloadStatus::Exhausted:
        estado = DownloadState::Exhausted;
        break;
    case DownloadStatus::Connecting:
        estado = DownloadState::Connecting;
        break;
    case DownloadStatus::Running:
        estado = DownloadState::Running;
        break;
    }
    // `bytes` is the position of the next byte to write.
    ListRecord shown;
    shown.Data = record.Data;
    shown.path = record.path;
    shown.total = record.total;
    shown.bytes = std::max<qint64>(record.bytes - 1, 0);
    shown.tiempo = record.tiempo;
    shown.allowredo = record.allowredo;
    DownloadInfo info = describeDownload(shown, estado);
    if (const Transfer *transfer = m_slots[index].transfer;
        transfer && transfer->connectionCount() > 0)
        info.conexiones =
            QStringLiteral("Conexiones: ") + QString::number(transfer->connectionCount());
    return info;
}

QString ActiveList::remainingTime(int index) const
{
    const DownloadSlot &record = m_slots[index].record;
    if (record.status == DownloadStatus::Finished)
        return QStringLiteral("00:00");
    if (record.velocidad < 1 || record.total <= 0)
        return QStringLiteral("*");
    return elapsedText(
        std::llround(double(record.total - record.bytes) / 1024.0 / record.velocidad));
}

void ActiveList::describeSelected()
{
    m_details = DownloadDetails();
    m_progressPending = false;
    if (!existe(m_selected))
        return;
    const DownloadSlot &record = m_slots[m_selected].record;
    m_details.inf = QStringLiteral("Información detallada de ") + record.path;
    m_details.velmedia = QString::number(record.velocidad) + QStringLiteral(" Kb/seg");
    m_details.tiempou = elapsedText(record.tiempo);
    m_details.tiemporest = remainingTime(m_selected);
    m_details.urlt = record.Data;
    m_details.porcientot =
        record.total > 0
            ? QString::number(std::llround(double(record.bytes) / double(record.total) * 100.0)) +
                  QLatin1Char('%')
            : QStringLiteral("*");
    m_details.bytest = QString::number(std::max<qint64>(record.bytes - 1, 0)) + QLatin1Char('/') +
                       QString::number(record.total);
    m_details.allowredoc = record.allowredo;
}

bool ActiveList::holds(int index, const QString &path) const
{
    return existe(index) && m_slots[index].record.path == path;
}

void ActiveList::logLine(const QString &text, quint32 colour)
{
    m_history.append(QStringLiteral("\r\n") + text, colour);
}

void ActiveList::CallCancel()
{
    if (!enabledCommands().detener)
        return;
    const int i = m_selected;
    const QString path = m_slots[i].record.path;
    if (!m_desktop.askYesNo(QStringLiteral("¿Seguro que desea cancelar la transferencia de ") +
                            path + QLatin1Char('?')))
        return;
    if (!holds(i, path))
        return;
    delfile(i, true);
    logLine(QStringLiteral("Cancelada la descarga de ") + path + QStringLiteral(" a las ") +
                timeOfDay(),
            HistoryColour::DarkRed);
}

void ActiveList::CallPause()
{
    if (!enabledCommands().pausar || !m_inactive)
        return;
    const int i = m_selected;
    const QString path = m_slots[i].record.path;
    if (!m_slots[i].record.allowredo &&
        !m_desktop.askYesNo(QStringLiteral(
            "Advertencia: Este servidor no soporta la reanudación de descargas, así que "
            "empezará de cero la próxima vez. ¿Desea pausar la descarga de todas formas?")))
        return;
    if (!holds(i, path))
        return;
    // A full inactive list refuses it (and says so); the download then keeps running here.
    const int queued = m_inactive->rowCount();
    toinact(i);
    if (m_inactive->rowCount() == queued)
        return;
    logLine(QStringLiteral("Pausada la descarga de ") + path + QStringLiteral(" a las ") +
                timeOfDay() + QStringLiteral(" cuando llevaba descargado ") +
                QString::number(m_slots[i].record.bytes) + QStringLiteral(" bytes"),
            HistoryColour::Black);
    // The partial file stays for the resume.
    delfile(i, false);
}

void ActiveList::CallContinue()
{
    if (!enabledCommands().continuar)
        return;
    const int i = m_selected;
    m_slots[i].transfer->restart(m_settings.vecesv);
    describeSelected();
    Q_EMIT changed(i);
}

void ActiveList::CallExe()
{
    if (!enabledCommands().open)
        return;
    const QString path = m_slots[m_selected].record.path;
    m_desktop.openFile(path);
    logLine(QStringLiteral("Ejecutado el archivo ") + path + QStringLiteral(" a las ") +
                timeOfDay(),
            HistoryColour::Black);
}

void ActiveList::CallAntiv()
{
    if (!enabledCommands().antivirus)
        return;
    if (m_settings.virus.isEmpty()) {
        m_desktop.messageBox(QStringLiteral("No hay ningún antivirus configurado."),
                             Desktop::Icon::Exclamation);
        return;
    }
    m_desktop.startProgram(m_settings.virus + QLatin1Char(' ') + m_slots[m_selected].record.path);
}

void ActiveList::CallProp()
{
    if (enabledCommands().propiedades)
        Q_EMIT propertiesRequested(m_selected);
}
