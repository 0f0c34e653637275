#pragma once

#include <QFrame>
#include <QList>
#include <QPointer>

class QLabel;
class QScrollBar;

// The rows of a list window: the column headers, one row per download in slot order and the
// scroll bar `scroll`. The rows are the list's; the frame only places them.
class RowFrame final : public QFrame
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(RowFrame)

public:
    static constexpr int RowPitch = 300; // twips

    explicit RowFrame(QWidget *parent = nullptr);

    // `rows` in slot order; `highestIndex` is the highest slot holding a row.
    void reordenar_indicador(const QList<QWidget *> &rows, int highestIndex);
    QScrollBar *scroll() const { return m_scroll; }
    // The widget the rows are children of.
    QWidget *rowParent() { return this; }
    // Room for the headers and a few rows, however small the window is made.
    QSize minimumSizeHint() const override;
    // Scrolls as little as it takes to show the whole of `row`.
    void showRow(const QWidget *row);

Q_SIGNALS:
    // A click on the frame outside every row.
    void emptyClicked();
    // The keys of a list: the selection moves `step` rows (far beyond the ends for Home and
    // End), Enter asks for the selected download's details, the menu key for its menu.
    void stepRequested(int step);
    void detailsRequested();
    void menuRequested();

protected:
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void placeHeaders();
    void placeRows();
    int visibleRows() const;

    QList<QPointer<QWidget>> m_rows;
    int m_highestIndex = 0;
    QWidget *m_header;
    QLabel *m_filename;
    QLabel *m_avance;
    QLabel *m_porciento;
    QLabel *m_nbytes;
    QLabel *m_urll;
    QScrollBar *m_scroll;
};
