// The once-a-second work of the active list: time and silence, speeds, switching off.
#include "activelist.h"
#include "desktop.h"
#include "settings.h"
#include "texts.h"
#include "transfer.h"

#include <cmath>

void ActiveList::tiempotransTick()
{
    for (int i = 1; i <= highestIndex(); ++i) {
        DownloadSlot &slot = m_slots[i];
        if (!slot.activa || !m_rows[i] || m_rows[i]->finalizado())
            continue;
        ++slot.tiempo;
        m_transfers[i]->countSilence();
        if (i == m_selected) {
            m_details.tiempou = elapsedText(slot.tiempo);
            Q_EMIT detailsChanged();
        }
    }
}

void ActiveList::updateTick()
{
    int total = 0;
    for (int i = 1; i <= highestIndex(); ++i) {
        DownloadSlot &slot = m_slots[i];
        if (!slot.activa || !m_rows[i])
            continue;
        const DownloadRow &row = *m_rows[i];
        // The average since the current connection started, not an instantaneous rate.
        double speed = 0;
        const qint64 seconds = slot.tiempo - slot.tiempoinicio;
        if (seconds > 0)
            speed = roundTo2(double(slot.bytes - slot.bytesinicio) / 1024.0 / double(seconds));
        if (!row.reconectando() && !row.finalizado()) {
            slot.velocidad = int(std::nearbyint(speed));
            total = int(std::nearbyint(total + speed));
        }
        if (i == m_selected) {
            m_details.velmedia = QString::number(slot.velocidad) + QStringLiteral(" Kb/seg");
            m_details.tiemporest = remainingTime(i);
            Q_EMIT detailsChanged();
        }
    }
    const QString mean =
        total > 0 ? decimalText(double(total) / (rowCount() - 1)) : QStringLiteral("0");
    showStatus(StatusPanel::Velmedia, QStringLiteral("Vel. Total: ") + QString::number(total) +
                                          QStringLiteral("Kb/seg||Vel. Media: ") + mean +
                                          QStringLiteral(" Kb/seg"));
    Q_EMIT totalSpeed(total);
}

void ActiveList::shutdownTick()
{
    if (!m_apagar)
        return;
    for (int i = 1; i <= highestIndex(); ++i) {
        if (m_slots[i].activa && m_rows[i] && !m_rows[i]->finalizado())
            return;
    }
    m_apagar = false;
    Q_EMIT shutdownRequested();
    m_desktop.powerOff();
}
