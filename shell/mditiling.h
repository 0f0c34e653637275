#pragma once

#include <QList>

class QMdiArea;
class QMdiSubWindow;

// One child window to place; one that yields gives up room to the others when there is not
// enough for all.
struct Tile
{
    QMdiSubWindow *window;
    bool yields = false;
};

// Places child windows in rows, top to bottom, the windows of a row side by side. Each window
// gets the room its contents need (for contents that flow into more lines when narrow, the
// height they need at the width it gets), a window that yields a little more, and what is left
// over is shared equally. When there is less than that, the windows that yield shrink, down to
// what they need themselves. A row too wide for the area wraps onto the next, so the area never
// scrolls sideways; only windows that cannot all fit one row above another make it scroll down.
void placeInRows(QMdiArea &area, const QList<QList<Tile>> &rows);
