#pragma once

#include "activelist.h"
#include "rowbinding.h"

#include <QBasicTimer>
#include <QPointer>
#include <QWidget>
#include <memory>

class DetailPanel;
class DetailWindow;
class QAction;
class QMenu;

// The window `activas`: one row per running download, the toolbar `opciones`, the pop-up menu
// `menu` and the panel `inf` that describes the selected download. It shows what the active
// list holds and hands every command to it.
class ActiveWindow final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ActiveWindow)

public:
    // The detail panel is refreshed at most this often while a download runs.
    static constexpr int PanelRefreshMs = 250;

    ActiveWindow(ActiveList &list, DetailWindow &detail, QWidget *parent = nullptr);
    ~ActiveWindow() override;

    // The two-state "apagar": pressed, the computer is switched off once every download is done.
    QAction *apagarAction() const { return m_apagar; }
    QMenu *menu() const { return m_menu; }
    download *rowAt(int index) const { return m_rows->rowAt(index); }
    RowFrame *frame() const { return m_frame; }

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    void buildCommands();
    void showDetails(int index);
    void detailsChanged();
    void showSelection();
    void updateCommands();

    QPointer<ActiveList> m_list;
    DetailWindow &m_detail;
    RowFrame *m_frame;
    DetailPanel *m_inf;
    QMenu *m_menu;
    QAction *m_continuar = nullptr;
    QAction *m_pausar = nullptr;
    QAction *m_cancelar = nullptr;
    QAction *m_ejecutar = nullptr;
    QAction *m_antivirus = nullptr;
    QAction *m_propiedades = nullptr;
    QAction *m_delend = nullptr;
    QAction *m_apagar = nullptr;
    std::unique_ptr<RowBinding<ActiveList>> m_rows;
    QBasicTimer m_panelRefresh;
    int m_shownSelection = -1;
};
