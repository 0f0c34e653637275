#include "grafica.h"

#include "wincolor.h"

#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <cmath>

namespace {

// Marks one value.
class Punto final : public QWidget
{
public:
    explicit Punto(QWidget *parent) : QWidget(parent)
    {
        setObjectName(QStringLiteral("punto"));
        setAttribute(Qt::WA_TransparentForMouseEvents);
        const int side = twipsToPixels(GraphModel::PointSize);
        resize(side, side);
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(0x4C, 0xC2, 0x5A));
        painter.drawEllipse(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5));
    }
};

QPoint toPixels(QPointF twips)
{
    return {int(std::lround(twips.x() / 15.0)), int(std::lround(twips.y() / 15.0))};
}

// Each label centred over its point, kept inside the graph's left, right and top edges.
QList<QRect> overPoints(const QList<QRect> &points, const QList<QSize> &sizes, QSize area)
{
    QList<QRect> places;
    for (qsizetype i = 0; i < points.size(); ++i) {
        const QSize size = sizes[i];
        const int left = points[i].x() + (points[i].width() - size.width()) / 2;
        const int top = points[i].top() - 4 - size.height();
        places.append(QRect(
            QPoint(std::clamp(left, 0, std::max(0, area.width() - size.width())), std::max(0, top)),
            size));
    }
    return places;
}

} // namespace

Grafica::Grafica(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("Grafica"));
    setAutoFillBackground(true);
    QPalette colours = palette();
    colours.setColor(QPalette::Window, QColor(0x20, 0x24, 0x28));
    colours.setColor(QPalette::WindowText, winColor(0xE0E0E0));
    setPalette(colours);
    QFont small = font();
    m_labelSize = std::max(MinimumLabelSize, small.pointSizeF() * 0.85);
    small.setPointSizeF(m_labelSize);
    for (int i = 0; i < GraphModel::Points; ++i) {
        m_punto.append(new Punto(this));
        auto *label = new QLabel(m_model.text(i), this);
        label->setObjectName(QStringLiteral("texto"));
        label->setFont(small);
        label->setAttribute(Qt::WA_TransparentForMouseEvents);
        m_texto.append(label);
    }
    // Arranged among many windows it may get little room: its labels then get smaller.
    setMinimumSize(120, 60);
}

void Grafica::addvalue(int value, const QString &text)
{
    m_model.addvalue(value, text);
    for (int i = 0; i < GraphModel::Points; ++i)
        m_texto[i]->setText(m_model.text(i));
    Redraw();
}

void Grafica::Redraw()
{
    const double width = contentsRect().width() * 15.0;
    const double height = contentsRect().height() * 15.0;
    QList<QRect> markers;
    for (int i = 0; i < GraphModel::Points; ++i) {
        m_punto[i]->move(toPixels(m_model.pointAt(i, width, height)));
        markers.append(m_punto[i]->geometry());
    }
    // Labels that cannot all stand apart are tried in a smaller font, down to the least that
    // still reads; in a graph too small even for that they stand over their points.
    QFont font = m_texto[0]->font();
    QList<QRect> places;
    for (qreal points = m_labelSize; places.isEmpty() && points >= MinimumLabelSize;
         points -= 0.5) {
        font.setPointSizeF(points);
        const QFontMetrics metrics(font);
        QList<QSize> sizes;
        for (const QLabel *label : std::as_const(m_texto))
            sizes.append(metrics.size(Qt::TextSingleLine, label->text()));
        places = GraphModel::placeLabels(markers, sizes, size());
        if (places.isEmpty() && points - 0.5 < MinimumLabelSize)
            places = overPoints(markers, sizes, size());
    }
    for (int i = 0; i < GraphModel::Points; ++i) {
        m_texto[i]->setFont(font);
        m_texto[i]->setGeometry(places[i]);
    }
    update();
}

void Grafica::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(winColor(0xE0E0E0), 1));
    const QPointF centre(GraphModel::PointSize / 30.0, GraphModel::PointSize / 30.0);
    for (int i = 0; i + 1 < GraphModel::Points; ++i)
        painter.drawLine(QPointF(m_punto[i]->pos()) + centre,
                         QPointF(m_punto[i + 1]->pos()) + centre);
}

void Grafica::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    Redraw();
}

void Grafica::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        Q_EMIT Click();
}

void Grafica::mouseDoubleClickEvent(QMouseEvent *)
{
    Q_EMIT DblClick();
}
