#include "rowframe.h"

#include "download.h"
#include "downloadslot.h"
#include "wincolor.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QScrollBar>
#include <cmath>

namespace {

// Where the k-th row of a list goes (twips from the top of the frame) when the scroll bar stands
// at `scrollValue` (0 to 100): the rows are 300 twips apart below the column headers, and the bar
// moves them by `highestIndex` × value / 100 rows. A row above the headers is hidden.
double rowTop(int k, int highestIndex, int scrollValue, int headerHeight)
{
    return headerHeight + (k - highestIndex * scrollValue / 100.0) * RowFrame::RowPitch;
}

// The largest value the bar needs to bring the last of `rows` rows into a frame that shows
// `visibleRows` of them (the rule alone would scroll every row out at 100); 0 when all fit.
int scrollMaximum(int rows, int highestIndex, int visibleRows)
{
    if (rows <= visibleRows || highestIndex <= 0)
        return 0;
    const double needed = 100.0 * (rows - visibleRows) / highestIndex;
    return std::min(100, int(std::ceil(needed)));
}

QLabel *header(QWidget *parent, const char *name, const QString &text)
{
    auto *label = new QLabel(text, parent);
    label->setObjectName(QLatin1String(name));
    label->setIndent(2);
    return label;
}

} // namespace

RowFrame::RowFrame(QWidget *parent)
    : QFrame(parent), m_header(new QWidget(this)),
      m_filename(header(m_header, "filename", QStringLiteral("Archivo"))),
      m_avance(header(m_header, "avance", QStringLiteral("Progreso"))),
      m_porciento(header(m_header, "porciento", QStringLiteral("%"))),
      m_nbytes(header(m_header, "nbytes", QStringLiteral("Descargado"))),
      m_urll(header(m_header, "urll", QStringLiteral("URL"))),
      m_scroll(new QScrollBar(Qt::Vertical, this))
{
    setObjectName(QStringLiteral("frame"));
    setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    setBackgroundRole(QPalette::Base);
    setAutoFillBackground(true);
    m_header->setObjectName(QStringLiteral("headers"));
    m_header->setBackgroundRole(QPalette::Button);
    m_header->setAutoFillBackground(true);
    m_porciento->setAlignment(Qt::AlignCenter);
    m_scroll->setObjectName(QStringLiteral("scroll"));
    m_scroll->setAccessibleName(QStringLiteral("Desplazar la lista"));
    m_scroll->setRange(0, 0);
    m_scroll->hide();
    connect(m_scroll, &QScrollBar::valueChanged, this, &RowFrame::placeRows);
    // A click on a row gives the list the keyboard.
    setFocusPolicy(Qt::StrongFocus);
}

void RowFrame::reordenar_indicador(const QList<QWidget *> &rows, int highestIndex)
{
    m_rows.clear();
    for (QWidget *row : rows)
        m_rows.append(row);
    m_highestIndex = highestIndex;
    placeRows();
}

QSize RowFrame::minimumSizeHint() const
{
    constexpr int ShownRows = 2;
    const int frame = 2 * frameWidth();
    // Each of the four equal columns is wide enough for the longest size a 10 GiB download
    // shows, beside its indent; the rows leave room for the scroll bar.
    const int column = fontMetrics().horizontalAdvance(QStringLiteral("10239.99 Mb")) + 2 * 2;
    return {4 * column + twipsToPixels(download::PercentWidth) + m_scroll->sizeHint().width() +
                frame,
            twipsToPixels((ShownRows + 1) * RowPitch) + frame};
}

int RowFrame::visibleRows() const
{
    const int height = contentsRect().height() - m_header->height();
    return std::max(0, height / twipsToPixels(RowPitch));
}

void RowFrame::placeHeaders()
{
    const QRect area = contentsRect();
    const int width = area.width() - (m_scroll->isHidden() ? 0 : m_scroll->width());
    m_header->setGeometry(area.x(), area.y(), width, twipsToPixels(RowPitch));
    const RowLayout columns = rowLayout(width * 15, download::PercentWidth, download::LockWidth);
    const auto place = [](QLabel *label, const QRect &twips) {
        label->setGeometry(twipsToPixels(twips.x()), 0, std::max(0, twipsToPixels(twips.width())),
                           twipsToPixels(twips.height()));
    };
    place(m_filename, columns.filename);
    place(m_avance, columns.avance);
    place(m_porciento, columns.porciento);
    place(m_nbytes, columns.nbytes);
    place(m_urll, columns.urll);
}

void RowFrame::placeRows()
{
    const QRect area = contentsRect();
    const int maximum = scrollMaximum(int(m_rows.size()), m_highestIndex, visibleRows());
    m_scroll->setRange(0, maximum);
    m_scroll->setPageStep(std::max(1, maximum / 4));
    m_scroll->setVisible(maximum > 0);
    m_scroll->setGeometry(area.right() + 1 - m_scroll->sizeHint().width(), area.y(),
                          m_scroll->sizeHint().width(), area.height());
    placeHeaders();

    const int headerHeight = m_header->height() * 15;
    const int width = m_header->width();
    int k = 0;
    for (const QPointer<QWidget> &row : std::as_const(m_rows)) {
        if (!row)
            continue;
        const double top = rowTop(k++, m_highestIndex, m_scroll->value(), headerHeight);
        row->setGeometry(area.x(), area.y() + int(std::lround(top / 15.0)), width,
                         twipsToPixels(download::RowHeight));
        row->setVisible(top >= headerHeight);
    }
    m_header->raise();
}

void RowFrame::resizeEvent(QResizeEvent *event)
{
    QFrame::resizeEvent(event);
    placeRows();
}

void RowFrame::mousePressEvent(QMouseEvent *event)
{
    event->accept();
}

void RowFrame::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        Q_EMIT emptyClicked();
}

void RowFrame::showRow(const QWidget *row)
{
    const int k = int(m_rows.indexOf(row));
    if (k < 0 || m_scroll->isHidden() || m_highestIndex == 0)
        return;
    const double header = m_header->height() * 15.0;
    const double height = contentsRect().height() * 15.0;
    const double top = rowTop(k, m_highestIndex, m_scroll->value(), header);
    const double perRow = 100.0 / m_highestIndex;
    if (top < header)
        m_scroll->setValue(int(std::floor(k * perRow)));
    else if (top + RowPitch > height)
        m_scroll->setValue(int(std::ceil((k + 1 - (height - header) / RowPitch) * perRow)));
}

void RowFrame::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Up:
        Q_EMIT stepRequested(-1);
        break;
    case Qt::Key_Down:
        Q_EMIT stepRequested(1);
        break;
    case Qt::Key_Home:
        Q_EMIT stepRequested(-SlotCount);
        break;
    case Qt::Key_End:
        Q_EMIT stepRequested(SlotCount);
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        Q_EMIT detailsRequested();
        break;
    case Qt::Key_Menu:
        Q_EMIT menuRequested();
        break;
    default:
        QFrame::keyPressEvent(event);
    }
}

void RowFrame::wheelEvent(QWheelEvent *event)
{
    if (!m_scroll->isHidden())
        QCoreApplication::sendEvent(m_scroll, event);
}
