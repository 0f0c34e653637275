#pragma once

#include <QWidget>

// The pie `tarta` of the detail window: the part of the file already on disk.
class Tarta final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Tarta)

public:
    explicit Tarta(QWidget *parent = nullptr);

    // 0 to 1.
    void setProportion(double done);
    double proportion() const { return m_done; }
    QSize sizeHint() const override { return {96, 96}; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    double m_done = 0;
};
