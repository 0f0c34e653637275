#include "inactivelist.h"

#include "activelist.h"
#include "desktop.h"
#include "failure.h"
#include "historysink.h"
#include "settings.h"
#include "textfile.h"
#include "texts.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <cmath>

InactiveList::InactiveList(const Settings &settings, Desktop &desktop, HistorySink &history,
                           const ProgramFolder &folder, RowFactory rows, QObject *parent)
    : QObject(parent), m_settings(settings), m_desktop(desktop), m_history(history),
      m_folder(folder), m_makeRow(std::move(rows))
{}

void InactiveList::load()
{
    const QString path = m_folder.file(QStringLiteral("inactivas.dwn"));
    if (!QFileInfo::exists(path))
        return;
    try {
        TextFileReader reader = TextFileReader::open(path);
        while (!reader.atEnd()) {
            const ListRecord r = readRecord(reader, ListKind::Inactive);
            addnew(r.Data, r.path, r.total, r.bytes, r.allowredo, r.tiempo, true, r.usernm, r.passw,
                   r.rememb, r.locked);
        }
    } catch (const Failure &failure) {
        m_desktop.messageBox(QStringLiteral("Error al cargar lista de inactivas: ") +
                                 failure.description(),
                             Desktop::Icon::Critical, QStringLiteral("Error"));
    }
}

void InactiveList::addnew(const QString &Data, const QString &path, qint64 total, qint64 bytes,
                          bool allowredo, qint64 tiempo, bool loading, const QString &usernm,
                          const QString &passw, bool rememb, bool locked)
{
    int i = 1;
    while (i < SlotCount && m_rows[i])
        ++i;
    if (i >= SlotCount) {
        m_desktop.messageBox(QStringLiteral("Se ha alcanzado el máximo de descargas en cola."),
                             Desktop::Icon::Critical);
        return;
    }
    m_rows[i] = m_makeRow(i);
    DownloadRow &row = *m_rows[i];
    row.setArchivo(path);
    row.setUrl(Data);
    row.setLocked(locked);
    m_registros[i] =
        ListRecord{Data, path, total, bytes, tiempo, allowredo, usernm, passw, rememb, locked};
    if (total > 0)
        row.setPorcentaje(int(std::nearbyint(double(bytes) / double(total) * 100.0)));
    row.setBytes(bytes, SizeUnits::AboveThreshold);
    m_ocupado[i] = true;
    Q_EMIT rowsChanged();
    if (!loading)
        guardar_lista_inactivas();
}

void InactiveList::guardar_lista_inactivas()
{
    TextFileWriter writer;
    for (int i = 1; i <= highestIndex(); ++i) {
        if (m_ocupado[i])
            writeRecord(writer, m_registros[i], ListKind::Inactive);
    }
    try {
        writer.commit(m_folder.file(QStringLiteral("inactivas.dwn")));
    } catch (const Failure &) {
        // Saving never interrupts the person; the next change writes the list again.
    }
}

bool InactiveList::existe(int index) const
{
    return index > 0 && index < SlotCount && m_ocupado[index];
}

void InactiveList::setSeleccionado(int index)
{
    if (m_selected > 0 && m_rows[m_selected])
        m_rows[m_selected]->setSelected(false);
    m_selected = (index > 0 && index < SlotCount && m_rows[index]) ? index : 0;
    if (m_selected)
        m_rows[m_selected]->setSelected(true);
    Q_EMIT selectionChanged();
}

void InactiveList::unload(int index)
{
    if (m_rows[index]) {
        Q_EMIT rowRemoved(index);
        std::shared_ptr<DownloadRow> last(m_rows[index].release());
        QMetaObject::invokeMethod(
            this, [last] {}, Qt::QueuedConnection);
    }
    m_ocupado[index] = false;
}

int InactiveList::addToActive(int index)
{
    const ListRecord &r = m_registros[index];
    return m_active ? m_active->addnew(r.Data, r.path, r.total, r.bytes, r.allowredo, r.tiempo,
                                       false, r.usernm, r.passw, r.rememb)
                    : 0;
}

void InactiveList::logLine(const QString &text, quint32 colour)
{
    // These lines carry no line break of their own: they run on after the previous text.
    m_history.append(text + QStringLiteral(" a las ") +
                         QTime::currentTime().toString(QStringLiteral("HH:mm:ss")),
                     colour);
}

void InactiveList::toactivas()
{
    int found = 0;
    for (int i = 1; i <= highestIndex() && !found; ++i) {
        if (m_ocupado[i] && !m_registros[i].locked)
            found = i;
    }
    if (!found) {
        guardar_lista_inactivas();
        return;
    }
    if (found == m_selected)
        setSeleccionado(0);
    // With no place left at all in the active list the download waits here rather than be lost.
    if (m_active && m_active->rowCount() >= SlotCount)
        return;
    addToActive(found);
    unload(found);
    Q_EMIT rowsChanged();
    // The name is that of the selected slot at this moment, not of the one just moved.
    logLine(QStringLiteral("Se continúa la descarga de ") + m_registros[m_selected].path,
            HistoryColour::Green);
    guardar_lista_inactivas();
}

void InactiveList::toact(int index)
{
    if (index < 0 || index >= SlotCount)
        return;
    addToActive(index);
    setSeleccionado(0);
    guardar_lista_inactivas();
}

void InactiveList::delfile(int index, bool borrar)
{
    if (index < 0 || index >= SlotCount)
        return;
    if (index == m_selected)
        setSeleccionado(0);
    unload(index);
    const QString &path = m_registros[index].path;
    if (borrar && QFileInfo::exists(path))
        QFile::remove(path);
    Q_EMIT rowsChanged();
    guardar_lista_inactivas();
}

void InactiveList::CallCancel()
{
    const int i = m_selected;
    if (!i)
        return;
    const QString path = m_registros[i].path;
    if (!m_desktop.askYesNo(QStringLiteral("¿Seguro que desea cancelar la transferencia de ") +
                            path + QStringLiteral("?")))
        return;
    // The download may have moved to the active list while the question was open.
    if (!existe(i) || m_registros[i].path != path)
        return;
    unload(i);
    if (QFileInfo::exists(path))
        QFile::remove(path);
    logLine(QStringLiteral("Cancelada la descarga de ") + path, HistoryColour::DarkRed);
    m_selected = 0;
    Q_EMIT rowsChanged();
    guardar_lista_inactivas();
}

void InactiveList::CallContinue()
{
    const int i = m_selected;
    if (!i)
        return;
    if (m_active && m_active->rowCount() >= m_settings.maxdescval) {
        m_desktop.messageBox(QStringLiteral("Ya hay activas el número máximo configurado."),
                             Desktop::Icon::Critical);
        return;
    }
    unload(i);
    addToActive(i);
    logLine(QStringLiteral("Se continúa la descarga de ") + m_registros[i].path,
            HistoryColour::Green);
    m_selected = 0;
    Q_EMIT rowsChanged();
    guardar_lista_inactivas();
}

void InactiveList::bloquear()
{
    const int i = m_selected;
    if (!i)
        return;
    m_registros[i].locked = !m_registros[i].locked;
    m_rows[i]->setLocked(m_registros[i].locked);
    Q_EMIT rowsChanged();
    guardar_lista_inactivas();
}
