#pragma once

#include <QList>
#include <QPointF>
#include <QRect>
#include <QString>
#include <array>

// The values of the speed graph: the last Points samples, oldest first, and the top of the scale,
// which only grows. Positions are in twips of the graph's inner area.
class GraphModel
{
public:
    static constexpr int Points = 9;
    static constexpr int PointSize = 100; // twips; lines join the centres of the markers

    // Appends one sample; `text` is its label.
    void addvalue(int value, const QString &text);
    int Max() const { return m_maximum; }
    int value(int i) const { return m_values.at(i); }
    QString text(int i) const { return m_texts.at(i); }

    // The top left corner of point i's marker in an area of `width` × `height`.
    QPointF pointAt(int i, double width, double height) const;

    // Where the labels of `points` (markers, in pixels) go in an area of `area`: each centred
    // above its point, or where that would touch another label, below it, then further up or
    // down; none leaves the area. Empty when they cannot all be placed so.
    static QList<QRect> placeLabels(const QList<QRect> &points, const QList<QSize> &labels,
                                    QSize area);

private:
    std::array<int, Points> m_values{};
    std::array<QString, Points> m_texts = initialTexts();
    int m_maximum = 20;

    static std::array<QString, Points> initialTexts();
};
