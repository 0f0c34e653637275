// The once-a-second work of the active list: time, speeds, switching off.
#include "activelist.h"
#include "desktop.h"
#include "settings.h"
#include "texts.h"

#include <cmath>

void ActiveList::tiempotransTick()
{
    for (int i = 1; i <= highestIndex(); ++i) {
        DownloadSlot &record = m_slots[i].record;
        if (!record.activa || record.status == DownloadStatus::Finished)
            continue;
        ++record.tiempo;
        if (i == m_selected) {
            m_details.tiempou = elapsedText(record.tiempo);
            noteProgress();
        }
    }
}

void ActiveList::updateTick()
{
    int total = 0;
    for (int i = 1; i <= highestIndex(); ++i) {
        DownloadSlot &record = m_slots[i].record;
        if (!record.activa)
            continue;
        // The average since the current connection started, not an instantaneous rate.
        double speed = 0;
        const qint64 seconds = record.tiempo - record.tiempoinicio;
        if (seconds > 0)
            speed = roundTo2(double(record.bytes - record.bytesinicio) / 1024.0 / double(seconds));
        if (record.status != DownloadStatus::Connecting &&
            record.status != DownloadStatus::Finished) {
            record.velocidad = int(std::nearbyint(speed));
            total = int(std::nearbyint(total + speed));
        }
        if (i == m_selected) {
            m_details.velmedia = QString::number(record.velocidad) + QStringLiteral(" Kb/seg");
            m_details.tiemporest = remainingTime(i);
        }
    }
    const QString mean =
        total > 0 ? decimalText(double(total) / (rowCount() - 1)) : QStringLiteral("0");
    Q_EMIT statusText(StatusPanel::Velmedia, QStringLiteral("Vel. Total: ") +
                                                 QString::number(total) +
                                                 QStringLiteral("Kb/seg||Vel. Media: ") + mean +
                                                 QStringLiteral(" Kb/seg"));
    Q_EMIT totalSpeed(total);
    if (total > 0 || existe(m_selected))
        noteProgress();
}

void ActiveList::shutdownTick()
{
    if (!m_apagar)
        return;
    for (int i = 1; i <= highestIndex(); ++i) {
        const DownloadSlot &record = m_slots[i].record;
        if (record.activa && record.status != DownloadStatus::Finished)
            return;
    }
    m_apagar = false;
    Q_EMIT shutdownRequested();
    m_desktop.powerOff();
}
