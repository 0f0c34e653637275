// The commands of the active list's toolbar and what the window shows of the selected download.
#include "activelist.h"
#include "desktop.h"
#include "historysink.h"
#include "inactivelist.h"
#include "listrecord.h"
#include "settings.h"
#include "texts.h"
#include "transfer.h"

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
    if (!hasRow(m_selected))
        return commands;
    const DownloadRow &row = *m_rows[m_selected];
    const bool finished = row.finalizado();
    commands.open = commands.antivirus = finished;
    commands.detener = commands.pausar = !finished;
    commands.continuar = row.redoend();
    commands.propiedades = true;
    return commands;
}

std::optional<DownloadInfo> ActiveList::detallado(int index) const
{
    if (!existe(index) || !m_rows[index])
        return std::nullopt;
    const DownloadSlot &slot = m_slots[index];
    const DownloadRow &row = *m_rows[index];
    QString estado = DownloadState::Running;
    if (row.finalizado())
        estado = DownloadState::Finished;
    else if (row.redoend())
        estado = DownloadState::Exhausted;
    else if (row.reconectando())
        estado = DownloadState::Connecting;
    // `bytes` is the position of the next byte to write.
    ListRecord record;
    record.Data = slot.Data;
    record.path = slot.path;
    record.total = slot.total;
    record.bytes = std::max<qint64>(slot.bytes - 1, 0);
    record.tiempo = slot.tiempo;
    record.allowredo = slot.allowredo;
    return describeDownload(record, estado);
}

QString ActiveList::remainingTime(int index) const
{
    const DownloadSlot &slot = m_slots[index];
    if (m_rows[index] && m_rows[index]->finalizado())
        return QStringLiteral("00:00");
    if (slot.velocidad < 1 || slot.total <= 0)
        return QStringLiteral("*");
    return elapsedText(std::llround(double(slot.total - slot.bytes) / 1024.0 / slot.velocidad));
}

void ActiveList::describeSelected()
{
    m_details = DownloadDetails();
    m_progressPending = false;
    if (hasRow(m_selected)) {
        const DownloadSlot &slot = m_slots[m_selected];
        m_details.inf = QStringLiteral("Información detallada de ") + slot.path;
        m_details.velmedia = QString::number(slot.velocidad) + QStringLiteral(" Kb/seg");
        m_details.tiempou = elapsedText(slot.tiempo);
        m_details.tiemporest = remainingTime(m_selected);
        m_details.urlt = slot.Data;
        m_details.porcientot =
            slot.total > 0
                ? QString::number(std::llround(double(slot.bytes) / double(slot.total) * 100.0)) +
                      QLatin1Char('%')
                : QStringLiteral("*");
        m_details.bytest = QString::number(std::max<qint64>(slot.bytes - 1, 0)) + QLatin1Char('/') +
                           QString::number(slot.total);
        m_details.allowredoc = slot.allowredo;
    }
    Q_EMIT detailsChanged();
}

bool ActiveList::holds(int index, const QString &path) const
{
    return existe(index) && m_rows[index] && m_slots[index].path == path;
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
    const QString path = m_slots[i].path;
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
    const QString path = m_slots[i].path;
    if (!m_slots[i].allowredo &&
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
                QString::number(m_slots[i].bytes) + QStringLiteral(" bytes"),
            HistoryColour::Black);
    // The partial file stays for the resume.
    delfile(i, false);
}

void ActiveList::CallContinue()
{
    if (!enabledCommands().continuar)
        return;
    const int i = m_selected;
    m_rows[i]->setRedoend(false);
    Transfer &transfer = *m_transfers[i];
    transfer.setRedoBudget(m_settings.vecesv);
    transfer.stop();
    m_rows[i]->setReconectando(true);
    transfer.start();
    describeSelected();
}

void ActiveList::CallExe()
{
    if (!enabledCommands().open)
        return;
    const QString path = m_slots[m_selected].path;
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
    m_desktop.startProgram(m_settings.virus + QLatin1Char(' ') + m_slots[m_selected].path);
}

void ActiveList::CallProp()
{
    if (enabledCommands().propiedades)
        Q_EMIT propertiesRequested(m_selected);
}
