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
#include <algorithm>
#include <cmath>

InactiveList::InactiveList(const Settings &settings, Desktop &desktop, HistorySink &history,
                           const ProgramFolder &folder, QObject *parent)
    : DownloadList(parent), m_settings(settings), m_desktop(desktop), m_history(history),
      m_folder(folder)
{}

void InactiveList::load()
{
    const QString path = m_folder.file(QStringLiteral("inactivas.dwn"));
    if (!QFileInfo::exists(path))
        return;
    const ExtrasByPath extras =
        loadExtras(m_folder.file(QStringLiteral("inactivas.json")), m_desktop);
    try {
        TextFileReader reader = TextFileReader::open(path);
        while (!reader.atEnd()) {
            ListRecord record = readRecord(reader, ListKind::Inactive);
            record.extras = extras.value(record.path);
            addnew(record, Loading::Yes);
        }
    } catch (const Failure &failure) {
        m_desktop.messageBox(QStringLiteral("Error al cargar lista de inactivas: ") +
                                 failure.description(),
                             Desktop::Icon::Critical, QStringLiteral("Error"));
    }
}

void InactiveList::addnew(const ListRecord &download, Loading loading)
{
    int i = 1;
    while (i < SlotCount && m_ocupado[i])
        ++i;
    if (i >= SlotCount) {
        m_desktop.messageBox(QStringLiteral("Se ha alcanzado el máximo de descargas en cola."),
                             Desktop::Icon::Critical);
        return;
    }
    m_registros[i] = withLoginApart(download);
    m_ocupado[i] = true;
    Q_EMIT added(i);
    if (loading == Loading::No)
        guardar_lista_inactivas();
}

RowContent InactiveList::row(int index) const
{
    const ListRecord &record = m_registros.at(index);
    RowContent row;
    row.archivo = record.path;
    row.url = record.Data;
    if (record.total > 0)
        row.porcentaje = int(std::nearbyint(double(record.bytes) / double(record.total) * 100.0));
    row.bytes = sizeText(record.bytes, SizeUnits::AboveThreshold);
    row.locked = record.locked;
    return row;
}

void InactiveList::guardar_lista_inactivas()
{
    TextFileWriter writer;
    ExtrasByPath extras;
    for (int i = 1; i <= highestIndex(); ++i) {
        if (m_ocupado[i]) {
            writeRecord(writer, m_registros[i], ListKind::Inactive);
            extras.insert(m_registros[i].path, m_registros[i].extras);
        }
    }
    try {
        writer.commit(m_folder.file(QStringLiteral("inactivas.dwn")));
        writeExtras(m_folder.file(QStringLiteral("inactivas.json")), extras);
    } catch (const Failure &) {
        // Saving never interrupts the person; the next change writes the list again.
    }
}

bool InactiveList::existe(int index) const
{
    return index > 0 && index < SlotCount && m_ocupado[index];
}

int InactiveList::rowCount() const
{
    return 1 + int(std::count(m_ocupado.begin() + 1, m_ocupado.end(), true));
}

int InactiveList::highestIndex() const
{
    for (int i = SlotCount - 1; i > 0; --i) {
        if (m_ocupado[i])
            return i;
    }
    return 0;
}

void InactiveList::setSeleccionado(int index)
{
    m_selected = existe(index) ? index : 0;
    Q_EMIT selectionChanged();
}

void InactiveList::unload(int index)
{
    if (!m_ocupado[index])
        return;
    m_ocupado[index] = false;
    Q_EMIT removed(index);
}

int InactiveList::addToActive(int index)
{
    return m_active ? m_active->addnew(m_registros[index]) : 0;
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
    setSeleccionado(0);
    unload(i);
    if (QFileInfo::exists(path))
        QFile::remove(path);
    logLine(QStringLiteral("Cancelada la descarga de ") + path, HistoryColour::DarkRed);
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
    setSeleccionado(0);
    unload(i);
    addToActive(i);
    logLine(QStringLiteral("Se continúa la descarga de ") + m_registros[i].path,
            HistoryColour::Green);
    guardar_lista_inactivas();
}

void InactiveList::bloquear()
{
    const int i = m_selected;
    if (!i)
        return;
    m_registros[i].locked = !m_registros[i].locked;
    Q_EMIT changed(i);
    guardar_lista_inactivas();
}
