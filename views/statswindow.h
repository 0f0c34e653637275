#pragma once

#include <QWidget>

class ActiveList;
class Grafica;

// The window `estadisticas`: the speed graph, fed once a second with the total speed of the
// active list.
class StatsWindow final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(StatsWindow)

public:
    explicit StatsWindow(ActiveList &list, QWidget *parent = nullptr);

    Grafica *grafica() const { return m_grafica; }

private:
    Grafica *m_grafica;
};
