#pragma once

#include "downloadlist.h"

#include <QObject>
#include <QPointer>
#include <array>

class QMenu;
class QPoint;
class RowFrame;
class download;

// The rows of a list window: one `download` per download of the list, inside the window's frame,
// made when the list adds a download, shown again when it announces a change or progress, gone
// when the download leaves. It makes the rows and the frame answer a person: a click selects (on
// the empty part, the selection goes), a right click selects and opens `menu`, a double click or
// Enter shows the details; Up, Down, Home and End move the selection into view, the menu key
// opens `menu` under the selected row. The list outlives its window.
class RowList final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(RowList)

public:
    RowList(DownloadList &list, RowFrame &frame, QMenu *menu);

    download *rowAt(int index) const;
    // The row `step` places away from `index` in slot order, stopping at the ends; from no row,
    // the first one downwards or the last one upwards. 0 when the list is empty.
    int stepFrom(int index, int step) const;

private:
    void add(int index);
    void remove(int index);
    void showRow(int index);
    void showAll();
    void showSelection();
    // reordenar_indicador: the rows in slot order.
    void lay();
    void select(int index);
    void showDetails(int index);
    void showMenu(int index, const QPoint &at);
    void connectFrame();

    DownloadList &m_list;
    RowFrame &m_frame;
    QMenu *m_menu;
    std::array<QPointer<download>, SlotCount> m_rows;
    int m_selected = 0; // the row shown as selected
};
