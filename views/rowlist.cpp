#include "rowlist.h"

#include "download.h"
#include "rowframe.h"

#include <QCursor>
#include <QMenu>
#include <algorithm>

RowList::RowList(DownloadList &list, RowFrame &frame, QMenu *menu)
    : QObject(&frame), m_list(list), m_frame(frame), m_menu(menu)
{
    connect(&list, &DownloadList::added, this, [this](int index) {
        add(index);
        lay();
    });
    connect(&list, &DownloadList::changed, this, &RowList::showRow);
    connect(&list, &DownloadList::removed, this, [this](int index) {
        remove(index);
        lay();
    });
    connect(&list, &DownloadList::progressed, this, &RowList::showAll);
    connect(&list, &DownloadList::selectionChanged, this, &RowList::showSelection);
    connectFrame();
    for (int i = 1; i <= list.highestIndex(); ++i) {
        if (list.existe(i))
            add(i);
    }
    showSelection();
    lay();
}

download *RowList::rowAt(int index) const
{
    return index > 0 && index < SlotCount ? m_rows[index].data() : nullptr;
}

void RowList::add(int index)
{
    remove(index);
    auto *row = new download(m_frame.rowParent());
    m_rows[index] = row;
    connect(row, &download::Click, this, [this, index] { select(index); });
    connect(row, &download::MouseUp, this, [this, index](int button) {
        if (button == 2)
            showMenu(index, QCursor::pos());
    });
    connect(row, &download::DblClick, this, [this, index] { showDetails(index); });
    showRow(index);
    row->show();
}

// The row may be the one a person's click is being handled for: it goes once that returned.
void RowList::remove(int index)
{
    if (download *row = m_rows[index]) {
        row->hide();
        row->deleteLater();
        m_rows[index] = nullptr;
    }
    if (m_selected == index)
        m_selected = 0;
}

void RowList::showRow(int index)
{
    if (download *row = rowAt(index))
        row->showContent(m_list.row(index));
}

void RowList::showAll()
{
    for (int i = 1; i < SlotCount; ++i) {
        if (m_rows[i])
            m_rows[i]->showContent(m_list.row(i));
    }
}

void RowList::showSelection()
{
    if (download *row = rowAt(m_selected))
        row->setSelected(false);
    m_selected = m_list.seleccionado();
    if (download *row = rowAt(m_selected))
        row->setSelected(true);
}

void RowList::lay()
{
    QList<QWidget *> rows;
    int highest = 0;
    for (int i = 1; i < SlotCount; ++i) {
        if (m_rows[i]) {
            rows.append(m_rows[i]);
            highest = i;
        }
    }
    m_frame.reordenar_indicador(rows, highest);
}

int RowList::stepFrom(int index, int step) const
{
    QList<int> shown;
    for (int i = 1; i < SlotCount; ++i) {
        if (m_rows[i])
            shown.append(i);
    }
    if (shown.isEmpty())
        return 0;
    const qsizetype at = shown.indexOf(index);
    if (at < 0)
        return step > 0 ? shown.first() : shown.last();
    return shown[std::clamp<qsizetype>(at + step, 0, shown.size() - 1)];
}

void RowList::select(int index)
{
    m_list.setSeleccionado(index);
}

void RowList::showDetails(int index)
{
    select(index);
    if (m_list.existe(index))
        m_list.CallProp();
}

void RowList::showMenu(int index, const QPoint &at)
{
    select(index);
    if (m_list.seleccionado() == index)
        m_menu->popup(at);
}

void RowList::connectFrame()
{
    connect(&m_frame, &RowFrame::emptyClicked, this, [this] { select(0); });
    connect(&m_frame, &RowFrame::stepRequested, this, [this](int step) {
        if (const int index = stepFrom(m_list.seleccionado(), step)) {
            select(index);
            m_frame.showRow(rowAt(index));
        }
    });
    connect(&m_frame, &RowFrame::detailsRequested, this,
            [this] { showDetails(m_list.seleccionado()); });
    connect(&m_frame, &RowFrame::menuRequested, this, [this] {
        const int index = m_list.seleccionado();
        if (download *row = rowAt(index))
            showMenu(index, row->mapToGlobal(QPoint(0, row->height())));
    });
}
