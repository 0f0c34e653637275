#include "statswindow.h"

#include "activelist.h"
#include "grafica.h"

#include <QVBoxLayout>

StatsWindow::StatsWindow(ActiveList &list, QWidget *parent)
    : QWidget(parent), m_grafica(new Grafica(this))
{
    setObjectName(QStringLiteral("estadisticas"));
    setWindowTitle(QStringLiteral("Estadísticas"));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_grafica);
    resize(480, 220);
    connect(&list, &ActiveList::totalSpeed, m_grafica, [this](int kbPerSecond) {
        m_grafica->addvalue(kbPerSecond, QString::number(kbPerSecond) + QStringLiteral(" Kb/seg"));
    });
    connect(m_grafica, &Grafica::Click, m_grafica, &Grafica::Redraw);
}
