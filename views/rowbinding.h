#pragma once

#include "download.h"
#include "downloadslot.h"
#include "rowframe.h"

#include <QCursor>
#include <QMenu>
#include <QPointer>
#include <algorithm>
#include <memory>

// Gives a list (ActiveList or InactiveList) its rows as `download` widgets inside a window's
// frame, and lays them out again whenever the list changes. The list owns the rows. A removed
// row leaves the frame at once, and when the window goes first every row leaves it, so a row is
// only ever deleted by the list, whichever of the two is destroyed first.
// It also makes the rows and the frame answer a person: a click selects (on the empty part, the
// selection goes), a right click selects and opens `menu`, a double click or Enter shows the
// details; Up, Down, Home and End move the selection into view, the menu key opens `menu` under
// the selected row.
template <typename List> class RowBinding
{
public:
    RowBinding(List &list, RowFrame &frame, QMenu *menu)
        : m_list(&list), m_frame(frame), m_menu(menu)
    {
        list.setRowFactory([this](int index) -> std::unique_ptr<DownloadRow> {
            auto row = std::make_unique<download>(m_frame.rowParent());
            connectRow(*row, index);
            return row;
        });
        m_connections[0] = QObject::connect(&list, &List::rowsChanged, &frame, [this] { lay(); });
        m_connections[1] = QObject::connect(&list, &List::rowRemoved, &frame,
                                            [this](int index) { release(index); });
        connectFrame();
        lay();
    }

    ~RowBinding()
    {
        for (const QMetaObject::Connection &connection : m_connections)
            QObject::disconnect(connection);
        if (!m_list)
            return;
        m_list->setRowFactory([](int) { return std::make_unique<RowState>(); });
        for (int i = 1; i < SlotCount; ++i)
            release(i);
    }

    RowBinding(const RowBinding &) = delete;
    RowBinding &operator=(const RowBinding &) = delete;

    download *rowAt(int index) const
    {
        return m_list ? dynamic_cast<download *>(m_list->rowAt(index)) : nullptr;
    }

    // The row `step` places away from `index` in slot order, stopping at the ends; from no row,
    // the first one downwards or the last one upwards. 0 when the list is empty.
    int stepFrom(int index, int step) const
    {
        QList<int> shown;
        for (int i = 1; m_list && i <= m_list->highestIndex(); ++i) {
            if (rowAt(i))
                shown.append(i);
        }
        if (shown.isEmpty())
            return 0;
        const qsizetype at = shown.indexOf(index);
        if (at < 0)
            return step > 0 ? shown.first() : shown.last();
        return shown[std::clamp<qsizetype>(at + step, 0, shown.size() - 1)];
    }

    // reordenar_indicador: the rows in slot order.
    void lay()
    {
        QList<QWidget *> rows;
        const int highest = m_list ? m_list->highestIndex() : 0;
        for (int i = 1; i <= highest; ++i) {
            if (download *row = rowAt(i))
                rows.append(row);
        }
        m_frame.reordenar_indicador(rows, highest);
    }

private:
    void select(int index)
    {
        if (m_list)
            m_list->setSeleccionado(index);
    }

    void showDetails(int index)
    {
        select(index);
        if (m_list && m_list->existe(index))
            m_list->CallProp();
    }

    void showMenu(int index, const QPoint &at)
    {
        select(index);
        if (m_list && m_list->seleccionado() == index)
            m_menu->popup(at);
    }

    // The frame is the context: the connections end with the window.
    void connectRow(download &row, int index)
    {
        QObject::connect(&row, &download::Click, &m_frame, [this, index] { select(index); });
        QObject::connect(&row, &download::MouseUp, &m_frame, [this, index](int button) {
            if (button == 2)
                showMenu(index, QCursor::pos());
        });
        QObject::connect(&row, &download::DblClick, &m_frame,
                         [this, index] { showDetails(index); });
    }

    void connectFrame()
    {
        QObject::connect(&m_frame, &RowFrame::emptyClicked, &m_frame, [this] { select(0); });
        QObject::connect(&m_frame, &RowFrame::stepRequested, &m_frame, [this](int step) {
            const int index = m_list ? stepFrom(m_list->seleccionado(), step) : 0;
            if (index) {
                select(index);
                m_frame.showRow(rowAt(index));
            }
        });
        QObject::connect(&m_frame, &RowFrame::detailsRequested, &m_frame, [this] {
            if (m_list)
                showDetails(m_list->seleccionado());
        });
        QObject::connect(&m_frame, &RowFrame::menuRequested, &m_frame, [this] {
            const int index = m_list ? m_list->seleccionado() : 0;
            if (download *row = rowAt(index))
                showMenu(index, row->mapToGlobal(QPoint(0, row->height())));
        });
    }

    void release(int index)
    {
        if (download *row = rowAt(index)) {
            row->hide();
            row->setParent(nullptr);
        }
    }

    QPointer<List> m_list;
    RowFrame &m_frame;
    QMenu *m_menu;
    QMetaObject::Connection m_connections[2];
};
