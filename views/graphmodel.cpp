#include "graphmodel.h"

#include <algorithm>
#include <optional>

std::array<QString, GraphModel::Points> GraphModel::initialTexts()
{
    std::array<QString, Points> texts;
    texts.fill(QStringLiteral("0 Kb/seg"));
    return texts;
}

void GraphModel::addvalue(int value, const QString &text)
{
    if (value > m_maximum)
        m_maximum = value + 20;
    std::shift_left(m_values.begin(), m_values.end(), 1);
    std::shift_left(m_texts.begin(), m_texts.end(), 1);
    m_values.back() = value;
    m_texts.back() = text;
}

QPointF GraphModel::pointAt(int i, double width, double height) const
{
    const double spacing = width / Points;
    const double top = height - (height / m_maximum) * m_values.at(i) - PointSize;
    return {i * spacing + 80, top};
}

QList<QRect> GraphModel::placeLabels(const QList<QRect> &points, const QList<QSize> &labels,
                                     QSize area)
{
    // 60 twips between a label and its point, and as much between two labels side by side, so
    // that their texts never read as one.
    constexpr int Gap = 4;
    const QRect inside(QPoint(0, 0), area);
    QList<QRect> placed;
    const auto free = [&](const QRect &label) {
        const QRect apart = label.adjusted(-Gap, 0, Gap, 0);
        const auto hits = [&](const QRect &other) { return apart.intersects(other); };
        return inside.contains(label) && std::none_of(placed.begin(), placed.end(), hits) &&
               std::none_of(points.begin(), points.end(), hits);
    };
    for (qsizetype i = 0; i < points.size(); ++i) {
        const QRect point = points[i];
        const QSize size = labels[i];
        const int left = std::clamp(point.x() + (point.width() - size.width()) / 2, 0,
                                    std::max(0, area.width() - size.width()));
        const int above = point.top() - Gap - size.height();
        const int below = point.bottom() + 1 + Gap;
        // Above, below, then a line further up, a line further down, and so on.
        std::optional<QRect> found;
        for (int step = 0; !found && (above - step * size.height() >= 0 ||
                                      below + (step + 1) * size.height() <= area.height());
             ++step) {
            for (const int top : {above - step * size.height(), below + step * size.height()}) {
                if (!found && free(QRect(QPoint(left, top), size)))
                    found = QRect(QPoint(left, top), size);
            }
        }
        if (!found)
            return {};
        placed.append(*found);
    }
    return placed;
}
