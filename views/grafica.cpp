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
    small.setPointSizeF(std::max(6.0, small.pointSizeF() * 0.85));
    for (int i = 0; i < GraphModel::Points; ++i) {
        m_punto.append(new Punto(this));
        auto *label = new QLabel(m_model.text(i), this);
        label->setObjectName(QStringLiteral("texto"));
        label->setFont(small);
        label->setAttribute(Qt::WA_TransparentForMouseEvents);
        m_texto.append(label);
    }
    setMinimumSize(240, 120);
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
    for (int i = 0; i < GraphModel::Points; ++i) {
        m_punto[i]->move(toPixels(m_model.pointAt(i, width, height)));
        QLabel *label = m_texto[i];
        label->resize(label->sizeHint());
        const QPoint place = toPixels(m_model.labelAt(
            i, width, height, QSizeF(label->width() * 15.0, label->height() * 15.0)));
        // A label centred over a point near the edge would be cut off; it moves in instead.
        label->move(std::clamp(place.x(), 0, std::max(0, this->width() - label->width())),
                    std::max(place.y(), 0));
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
