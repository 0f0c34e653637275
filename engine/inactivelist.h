#pragma once

#include "downloadinfo.h"
#include "downloadlist.h"
#include "listrecord.h"
#include "programfolder.h"

#include <array>
#include <optional>

class ActiveList;
class Desktop;
class HistorySink;
struct Settings;

// The downloads that are not transferring: paused, waiting for a free place, interrupted.
// Kept in "inactivas.dwn"; the active list pulls the next unlocked one when a place frees.
class InactiveList final : public DownloadList
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(InactiveList)

public:
    InactiveList(const Settings &settings, Desktop &desktop, HistorySink &history,
                 const ProgramFolder &folder, QObject *parent = nullptr);

    void setActiveList(ActiveList *active) { m_active = active; }

    void load();
    void addnew(const ListRecord &download, Loading loading = Loading::No);
    void guardar_lista_inactivas();
    void toactivas();
    void delfile(int index, bool borrar);
    void toact(int index);
    bool existe(int index) const override;

    // The toolbar commands, on the selected download.
    void CallCancel();
    void CallContinue();
    void bloquear();
    void CallProp() override;
    // The detail window's texts for a download of this list.
    std::optional<DownloadInfo> detallado(int index) const;

    // Downloads in the list, plus one for the unused slot 0, as the limits count them.
    int rowCount() const;
    int highestIndex() const override;
    const ListRecord &registro(int index) const { return m_registros.at(index); }
    RowContent row(int index) const override;
    int seleccionado() const override { return m_selected; }
    void setSeleccionado(int index) override;

private:
    void unload(int index);
    int addToActive(int index);
    void logLine(const QString &text, quint32 colour);

    const Settings &m_settings;
    Desktop &m_desktop;
    HistorySink &m_history;
    ProgramFolder m_folder;
    ActiveList *m_active = nullptr;

    std::array<ListRecord, SlotCount> m_registros;
    std::array<bool, SlotCount> m_ocupado{};
    int m_selected = 0;
};
