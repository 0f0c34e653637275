#pragma once

#include "download.h"
#include "downloadslot.h"
#include "rowframe.h"

#include <QMenu>
#include <QPointer>
#include <algorithm>
#include <functional>
#include <memory>

// Gives a list (ActiveList or InactiveList) its rows as `download` widgets inside a window's
// frame, and lays them out again whenever the list changes. The list owns the rows. A removed
// row leaves the frame at once, and when the window goes first every row leaves it, so a row is
// only ever deleted by the list, whichever of the two is destroyed first.
template <typename List> class RowBinding
{
public:
    // Called for each new row, to connect its events.
    using ConnectRow = std::function<void(download &row, int index)>;

    RowBinding(List &list, RowFrame &frame, ConnectRow connectRow)
        : m_list(&list), m_frame(frame), m_connectRow(std::move(connectRow))
    {
        list.setRowFactory([this](int index) -> std::unique_ptr<DownloadRow> {
            auto row = std::make_unique<download>(m_frame.rowParent());
            m_connectRow(*row, index);
            return row;
        });
        m_connections[0] = QObject::connect(&list, &List::rowsChanged, &frame, [this] { lay(); });
        m_connections[1] = QObject::connect(&list, &List::rowRemoved, &frame,
                                            [this](int index) { release(index); });
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

    // The list's keys: Up, Down, Home and End move the selection and bring its row into view,
    // Enter shows its details, the menu key opens `menu` under its row. `select` is the
    // window's own selection, which also keeps its commands up to date.
    void connectKeys(QObject *context, QMenu *menu, std::function<void(int)> select)
    {
        QObject::connect(&m_frame, &RowFrame::stepRequested, context, [this, select](int step) {
            const int index = m_list ? stepFrom(m_list->seleccionado(), step) : 0;
            if (index) {
                select(index);
                m_frame.showRow(rowAt(index));
            }
        });
        QObject::connect(&m_frame, &RowFrame::detailsRequested, context, [this] {
            if (m_list && m_list->existe(m_list->seleccionado()))
                m_list->CallProp();
        });
        QObject::connect(&m_frame, &RowFrame::menuRequested, context, [this, menu] {
            if (download *row = m_list ? rowAt(m_list->seleccionado()) : nullptr)
                menu->popup(row->mapToGlobal(QPoint(0, row->height())));
        });
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
    void release(int index)
    {
        if (download *row = rowAt(index)) {
            row->hide();
            row->setParent(nullptr);
        }
    }

    QPointer<List> m_list;
    RowFrame &m_frame;
    ConnectRow m_connectRow;
    QMetaObject::Connection m_connections[2];
};
