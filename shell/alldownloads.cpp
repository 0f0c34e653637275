#include "alldownloads.h"

#include "activelist.h"
#include "desktop.h"
#include "historysink.h"
#include "inactivelist.h"
#include "settings.h"

#include <QTime>

AllDownloads::AllDownloads(ActiveList &active, InactiveList &inactive, Desktop &desktop,
                           HistorySink &history)
    : m_active(active), m_inactive(inactive), m_desktop(desktop), m_history(history)
{}

bool AllDownloads::ask(const QString &question)
{
    return m_desktop.askYesNo(question);
}

void AllDownloads::log(const QString &text)
{
    m_history.append(QStringLiteral("\r\n") + text + QStringLiteral(" a las ") +
                         QTime::currentTime().toString(QStringLiteral("HH:mm:ss")),
                     HistoryColour::DarkRed);
}

void AllDownloads::cancelActive()
{
    for (int i = 1; i < SlotCount; ++i) {
        if (m_active.existe(i))
            m_active.delfile(i, true);
    }
}

void AllDownloads::cancelInactive()
{
    for (int i = 1; i < SlotCount; ++i) {
        if (m_inactive.existe(i))
            m_inactive.delfile(i, true);
    }
}

void AllDownloads::detall()
{
    if (!ask(QStringLiteral("¿Realmente desea cancelar (y eliminar) todas las descargas?")))
        return;
    cancelActive();
    cancelInactive();
    log(QStringLiteral("Canceladas TODAS las descargas"));
}

void AllDownloads::detact()
{
    if (!ask(QStringLiteral("¿Realmente desea cancelar (y eliminar) todas las descargas activas?")))
        return;
    cancelActive();
    log(QStringLiteral("Canceladas TODAS LAS DESCARGAS ACTIVAS"));
}

void AllDownloads::detinactivas()
{
    if (!ask(QStringLiteral(
            "¿Realmente desea cancelar (y eliminar) todas las descargas inactivas?")))
        return;
    cancelInactive();
    log(QStringLiteral("Canceladas TODAS LAS DESCARGAS INACTIVAS"));
}

void AllDownloads::pauseall()
{
    if (!ask(QStringLiteral("¿Realmente desea pausar TODAS las descargas activas (las que el "
                            "servidor no permita reanudación se deberán empezar de 0 la próxima "
                            "vez)?")))
        return;
    for (int i = 1; i < SlotCount; ++i) {
        if (!m_active.existe(i))
            continue;
        // A download with no place left in the queue stays active rather than be lost.
        if (m_inactive.rowCount() >= SlotCount) {
            m_desktop.messageBox(QStringLiteral("Se ha alcanzado el máximo de descargas en cola."),
                                 Desktop::Icon::Critical);
            return;
        }
        m_active.toinact(i);
        m_active.delfile(i, false);
    }
}

void AllDownloads::contall()
{
    for (int i = 1; i < SlotCount; ++i) {
        if (!m_inactive.existe(i))
            continue;
        if (m_active.rowCount() >= m_active.settings().maxdescval)
            return;
        m_inactive.toact(i);
        m_inactive.delfile(i, false);
    }
}
