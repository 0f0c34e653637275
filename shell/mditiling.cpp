#include "mditiling.h"

#include <QLayout>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QStyle>
#include <numeric>

namespace {

// What a window that yields asks for beyond its needs: a few lines of text, a graph whose
// labels stand apart.
constexpr QSize Comfortable(260, 170);

struct Extent
{
    int least = 0; // below this the contents are cut
    int wanted = 0;
};

int sum(const QList<Extent> &extents, int Extent::*field)
{
    return std::accumulate(
        extents.begin(), extents.end(), 0,
        [field](int total, const Extent &extent) { return total + extent.*field; });
}

// The room each gets of `room`: what it wants and an equal share of the rest; with less than
// that, those that want more than they need take a part of the difference, the same part each.
QList<int> shareOut(int room, const QList<Extent> &extents)
{
    const int wanted = sum(extents, &Extent::wanted);
    const int least = sum(extents, &Extent::least);
    QList<int> shares;
    for (qsizetype i = 0; i < extents.size(); ++i) {
        const Extent extent = extents[i];
        if (room >= wanted) {
            const int spare = room - wanted;
            shares.append(extent.wanted + spare / int(extents.size()) +
                          (i < spare % extents.size() ? 1 : 0));
        } else if (room > least) {
            shares.append(extent.least + int(qint64(extent.wanted - extent.least) * (room - least) /
                                             (wanted - least)));
        } else {
            shares.append(extent.least);
        }
    }
    return shares;
}

Extent across(const Tile &tile)
{
    const int least = tile.window->minimumSizeHint().width();
    return {least, tile.yields ? std::max(least, Comfortable.width()) : least};
}

Extent down(const Tile &tile, int width)
{
    const QLayout *layout = tile.window->layout();
    int least = tile.window->minimumSizeHint().height();
    if (layout && layout->hasHeightForWidth())
        least = std::max(least, layout->totalMinimumHeightForWidth(width));
    return {least, tile.yields ? std::max(least, Comfortable.height()) : least};
}

// The rows, each wrapped onto more where its windows would be wider than `width`.
QList<QList<Tile>> wrapped(const QList<QList<Tile>> &rows, int width)
{
    QList<QList<Tile>> lines;
    for (const QList<Tile> &row : rows) {
        int used = width;
        for (const Tile &tile : row) {
            if (used + across(tile).least > width) {
                lines.append(QList<Tile>());
                used = 0;
            }
            lines.last().append(tile);
            used += across(tile).least;
        }
    }
    return lines;
}

} // namespace

void placeInRows(QMdiArea &area, const QList<QList<Tile>> &rows)
{
    const QSize room = area.maximumViewportSize();
    const int scrollBar = area.style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, &area);
    // First as if all fits; when it does not, again in the width the vertical scroll bar leaves.
    for (const int width : {room.width(), room.width() - scrollBar}) {
        const QList<QList<Tile>> lines = wrapped(rows, width);
        QList<QList<int>> widths;
        QList<Extent> heights;
        for (const QList<Tile> &line : lines) {
            QList<Extent> extents;
            for (const Tile &tile : line)
                extents.append(across(tile));
            widths.append(shareOut(width, extents));
            // A line needs what its neediest window needs; it yields only if all of them do.
            Extent height;
            for (qsizetype i = 0; i < line.size(); ++i) {
                const Extent extent = down(line[i], widths.last()[i]);
                height.least =
                    std::max(height.least, line[i].yields ? extent.least : extent.wanted);
                height.wanted = std::max(height.wanted, extent.wanted);
            }
            heights.append(height);
        }
        if (sum(heights, &Extent::least) > room.height() && width == room.width())
            continue;
        const QList<int> shares = shareOut(room.height(), heights);
        int y = 0;
        for (qsizetype row = 0; row < lines.size(); ++row) {
            int x = 0;
            for (qsizetype i = 0; i < lines[row].size(); ++i) {
                lines[row][i].window->showNormal();
                lines[row][i].window->setGeometry(x, y, widths[row][i], shares[row]);
                x += widths[row][i];
            }
            y += shares[row];
        }
        return;
    }
}
