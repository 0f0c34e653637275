#pragma once

#include "activelist.h"
#include "rowlist.h"

#include <QWidget>

class DetailPanel;
class DetailWindow;
class QAction;
class QMenu;
class RowFrame;

// The window `activas`: one row per running download, the toolbar `opciones`, the pop-up menu
// `menu` and the panel `inf` that describes the selected download. It shows what the active
// list holds and hands every command to it.
class ActiveWindow final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ActiveWindow)

public:
    ActiveWindow(ActiveList &list, DetailWindow &detail, QWidget *parent = nullptr);

    // The two-state "apagar": pressed, the computer is switched off once every download is done.
    QAction *apagarAction() const { return m_apagar; }
    QMenu *menu() const { return m_menu; }
    download *rowAt(int index) const { return m_rows->rowAt(index); }
    RowFrame *frame() const { return m_frame; }

private:
    void buildCommands();
    void showDetails(int index);
    void showPanel();
    void updateCommands();

    ActiveList &m_list;
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
    RowList *m_rows;
};
