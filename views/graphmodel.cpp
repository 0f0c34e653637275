#include "graphmodel.h"

#include <algorithm>

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

QPointF GraphModel::labelAt(int i, double width, double height, QSizeF label) const
{
    const QPointF point = pointAt(i, width, height);
    return {point.x() + PointSize / 2.0 - label.width() / 2.0, point.y() - 60 - label.height()};
}
