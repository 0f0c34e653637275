#include "flowlayout.h"

#include <QWidget>

FlowLayout::~FlowLayout()
{
    qDeleteAll(m_items);
}

void FlowLayout::addItem(QLayoutItem *item)
{
    m_items.append(item);
}

QLayoutItem *FlowLayout::takeAt(int index)
{
    return index >= 0 && index < m_items.size() ? m_items.takeAt(index) : nullptr;
}

int FlowLayout::heightForWidth(int width) const
{
    return arrange(QRect(0, 0, width, 0), false);
}

QSize FlowLayout::minimumSize() const
{
    QSize size;
    for (const QLayoutItem *item : m_items) {
        if (!item->isEmpty())
            size = size.expandedTo(item->minimumSize());
    }
    const QMargins margins = contentsMargins();
    return size + QSize(margins.left() + margins.right(), margins.top() + margins.bottom());
}

QSize FlowLayout::sizeHint() const
{
    return minimumSize();
}

void FlowLayout::setGeometry(const QRect &rect)
{
    QLayout::setGeometry(rect);
    arrange(rect, true);
}

int FlowLayout::arrange(const QRect &rect, bool apply) const
{
    const QRect area = rect.marginsRemoved(contentsMargins());
    const int gap = std::max(0, spacing());
    QList<QLayoutItem *> shown;
    for (QLayoutItem *item : m_items) {
        if (!item->isEmpty())
            shown.append(item);
    }
    const auto alone = [](const QLayoutItem *item) {
        return item->widget() &&
               item->widget()->sizePolicy().horizontalPolicy() == QSizePolicy::Expanding;
    };
    int y = area.top();
    for (qsizetype first = 0; first < shown.size();) {
        // The items of one line, and the width they need.
        qsizetype end = first + 1;
        int used = shown[first]->minimumSize().width();
        while (end < shown.size() && !alone(shown[first]) && !alone(shown[end]) &&
               used + gap + shown[end]->minimumSize().width() <= area.width()) {
            used += gap + shown[end]->minimumSize().width();
            ++end;
        }
        const int items = int(end - first);
        const int spare = std::max(0, area.width() - used);
        int height = 0;
        for (qsizetype i = first; i < end; ++i)
            height = std::max(height, shown[i]->sizeHint().height());
        int x = area.left();
        for (qsizetype i = first; i < end; ++i) {
            const int width = shown[i]->minimumSize().width() + spare / items +
                              (i - first < spare % items ? 1 : 0);
            if (apply)
                shown[i]->setGeometry(QRect(x, y, width, height));
            x += width + gap;
        }
        y += height + (end < shown.size() ? gap : 0);
        first = end;
    }
    const QMargins margins = contentsMargins();
    return y - area.top() + margins.top() + margins.bottom();
}
