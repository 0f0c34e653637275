#pragma once

#include "downloadinfo.h"
#include "downloadrow.h"
#include "downloadslot.h"
#include "listrecord.h"
#include "programfolder.h"
#include "rowtable.h"

#include <QObject>
#include <array>
#include <memory>
#include <optional>

class ActiveList;
class Desktop;
class HistorySink;
struct Settings;

// The downloads that are not transferring: paused, waiting for a free place, interrupted.
// Kept in "inactivas.dwn"; the active list pulls the next unlocked one when a place frees.
class InactiveList final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(InactiveList)

public:
    InactiveList(const Settings &settings, Desktop &desktop, HistorySink &history,
                 const ProgramFolder &folder, RowFactory rows, QObject *parent = nullptr);

    void setActiveList(ActiveList *active) { m_active = active; }
    // The rows of downloads added from now on; set it before load().
    void setRowFactory(RowFactory rows) { m_makeRow = std::move(rows); }

    void load();
    void addnew(const QString &Data, const QString &path, qint64 total, qint64 bytes,
                bool allowredo, qint64 tiempo, bool loading, const QString &usernm,
                const QString &passw, bool rememb, bool locked);
    void guardar_lista_inactivas();
    void toactivas();
    void delfile(int index, bool borrar);
    void toact(int index);
    bool existe(int index) const;

    // The toolbar commands, on the selected download.
    void CallCancel();
    void CallContinue();
    void bloquear();
    void CallProp();
    // The detail window's texts for a download of this list.
    std::optional<DownloadInfo> detallado(int index) const;

    int rowCount() const { return rowCountOf(m_rows); }
    int highestIndex() const { return highestIndexOf(m_rows); }
    const ListRecord &registro(int index) const { return m_registros.at(index); }
    DownloadRow *rowAt(int index) { return m_rows.at(index).get(); }
    int seleccionado() const { return m_selected; }
    void setSeleccionado(int index);

Q_SIGNALS:
    void rowsChanged();
    void rowRemoved(int index);
    void selectionChanged();
    // Show the detail window for this slot.
    void propertiesRequested(int index);

private:
    void unload(int index);
    int addToActive(int index);
    void logLine(const QString &text, quint32 colour);

    const Settings &m_settings;
    Desktop &m_desktop;
    HistorySink &m_history;
    ProgramFolder m_folder;
    RowFactory m_makeRow;
    ActiveList *m_active = nullptr;

    std::array<ListRecord, SlotCount> m_registros;
    std::array<bool, SlotCount> m_ocupado{};
    RowTable m_rows;
    int m_selected = 0;
};
