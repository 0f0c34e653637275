#include "tarta.h"

#include "wincolor.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

Tarta::Tarta(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("tarta"));
    setMinimumSize(64, 64);
}

void Tarta::setProportion(double done)
{
    m_done = std::clamp(done, 0.0, 1.0);
    setAccessibleDescription(QString::number(std::lround(m_done * 100)) + QLatin1Char('%'));
    update();
}

void Tarta::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const int side = std::min(width(), height()) - 4;
    const QRectF circle((width() - side) / 2.0, (height() - side) / 2.0, side, side);
    painter.setPen(QPen(palette().color(QPalette::Mid), 1));
    painter.setBrush(winColor(0xE0E0E0));
    painter.drawEllipse(circle);
    if (m_done > 0) {
        painter.setBrush(winColor(0xD57000));
        // Clockwise from twelve o'clock; Qt counts in sixteenths of a degree.
        painter.drawPie(circle, 90 * 16, -int(std::lround(m_done * 360 * 16)));
    }
}
