#pragma once

#include "activelist.h"
#include "inactivelist.h"
#include "rowlist.h"

#include <QWidget>

class DetailWindow;
class QAction;
class QMenu;
class RowFrame;

// The window `inactivas`: one row per paused, queued or interrupted download, the toolbar
// `opciones` (cancel, continue, lock) and the pop-up menu `menu2`. Links dropped on it go to the
// active list.
class InactiveWindow final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(InactiveWindow)

public:
    InactiveWindow(InactiveList &list, ActiveList &active, DetailWindow &detail,
                   QWidget *parent = nullptr);

    QMenu *menu2() const { return m_menu; }
    download *rowAt(int index) const { return m_rows->rowAt(index); }
    RowFrame *frame() const { return m_frame; }

private:
    void buildCommands();
    void updateCommands();

    InactiveList &m_list;
    DetailWindow &m_detail;
    RowFrame *m_frame;
    QMenu *m_menu;
    QAction *m_continuar = nullptr;
    QAction *m_cancelar = nullptr;
    QAction *m_bloquear = nullptr;
    QAction *m_propiedades = nullptr;
    RowList *m_rows;
};
