#pragma once

#include "graphmodel.h"

#include <QList>
#include <QWidget>

class QLabel;

// The speed graph `Grafica`: nine points `punto` with their labels `texto`, joined by lines.
class Grafica final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Grafica)

public:
    explicit Grafica(QWidget *parent = nullptr);

    void addvalue(int value, const QString &text);
    int Max() const { return m_model.Max(); }
    // Places every point and label for the present size, and draws the lines again.
    void Redraw();
    const GraphModel &model() const { return m_model; }

Q_SIGNALS:
    void Click();
    void DblClick();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    // The labels' font size in points: the one they take, and the least that still reads.
    static constexpr qreal MinimumLabelSize = 7.0;
    qreal m_labelSize = MinimumLabelSize;
    GraphModel m_model;
    QList<QWidget *> m_punto;
    QList<QLabel *> m_texto;
};
