#include "download.h"

#include "wincolor.h"

#include <QEvent>
#include <QFrame>
#include <QLabel>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>

namespace {

// The bar's colours: the groove and what is fetched.
constexpr quint32 GrooveColour = 0xE0E0E0;
constexpr quint32 FilledColour = 0xD57000;

int roundHalfEven(double value)
{
    return int(std::nearbyint(value));
}

QRect toPixels(const QRect &twips)
{
    return QRect(twipsToPixels(twips.x()), twipsToPixels(twips.y()),
                 std::max(0, twipsToPixels(twips.width())),
                 std::max(0, twipsToPixels(twips.height())));
}

QPixmap lockPicture()
{
    QPixmap picture(12, 14);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(90, 90, 90), 1.6));
    painter.drawArc(QRectF(2.5, 0.8, 7, 9), 0, 180 * 16);
    painter.drawLine(QPointF(2.5, 5.3), QPointF(2.5, 7));
    painter.drawLine(QPointF(9.5, 5.3), QPointF(9.5, 7));
    painter.fillRect(QRectF(1, 6.5, 10, 7), QColor(200, 160, 40));
    return picture;
}

int buttonNumber(Qt::MouseButton button)
{
    switch (button) {
    case Qt::LeftButton:
        return 1;
    case Qt::RightButton:
        return 2;
    case Qt::MiddleButton:
        return 4;
    default:
        return 0;
    }
}

} // namespace

PartsBar::PartsBar(QWidget *parent) : QProgressBar(parent)
{
    setRange(0, 100);
    setValue(0);
    setTextVisible(false);
    setStyleSheet(QStringLiteral("QProgressBar { background: %1; border: none; }"
                                 "QProgressBar::chunk { background: %2; }")
                      .arg(winColor(GrooveColour).name(), winColor(FilledColour).name()));
}

void PartsBar::setParts(const Parts &parts)
{
    if (parts == m_parts)
        return;
    m_parts = parts;
    update();
}

// Each stretch covers the pixel columns it touches, so that one only a few bytes long still
// shows; stretches that meet in a column are filled as one.
void PartsBar::paintEvent(QPaintEvent *event)
{
    if (m_parts.isEmpty()) {
        QProgressBar::paintEvent(event);
        return;
    }
    QPainter painter(this);
    const QRect area = rect();
    painter.fillRect(area, winColor(GrooveColour));
    const QColor filled = winColor(FilledColour);
    const double width = area.width();
    int left = 0;
    int right = -1; // the columns [left, right) not filled yet; none at first
    for (const auto &[from, to] : m_parts) {
        const int x0 = int(std::floor(std::clamp(from, 0.0, 1.0) * width));
        const int x1 = std::max(x0 + 1, int(std::ceil(std::clamp(to, 0.0, 1.0) * width)));
        if (x0 > right) {
            if (right > left)
                painter.fillRect(QRect(area.x() + left, area.y(), right - left, area.height()),
                                 filled);
            left = x0;
        }
        right = std::max(right, x1);
    }
    if (right > left)
        painter.fillRect(QRect(area.x() + left, area.y(), right - left, area.height()), filled);
}

RowLayout rowLayout(int rowWidth, int percentWidth, int lockWidth)
{
    RowLayout layout;
    const int h = download::RowHeight;
    // The column width is kept in 16 bits, rounded half to even.
    layout.q = std::clamp(roundHalfEven((rowWidth - percentWidth) / 4.0), -32768, 32767);
    const int q = layout.q;
    layout.filename = QRect(0, 0, q, h);
    layout.avance = QRect(q, 0, q, h);
    layout.porciento = QRect(2 * q, 0, percentWidth, h);
    const int lockLeft = roundHalfEven(2 * q + percentWidth / 2.0 - lockWidth / 2.0);
    layout.candado = QRect(lockLeft, 0, lockWidth, h);
    layout.nbytes = QRect(2 * q + percentWidth, 0, q, h);
    layout.urll = QRect(layout.nbytes.x() + q, 0, q, h);
    layout.lineEnd = rowWidth;
    return layout;
}

download::download(QWidget *parent)
    : QWidget(parent), m_filename(new QLabel(QStringLiteral("Archivo"), this)),
      m_avance(new PartsBar(this)), m_porciento(new QLabel(this)), m_candado(new QLabel(this)),
      m_nbytes(new QLabel(this)), m_urll(new QLabel(QStringLiteral("URL"), this)),
      m_line(new QFrame(this))
{
    setObjectName(QStringLiteral("download"));
    m_filename->setObjectName(QStringLiteral("filename"));
    m_avance->setObjectName(QStringLiteral("avance"));
    m_porciento->setObjectName(QStringLiteral("porciento"));
    m_candado->setObjectName(QStringLiteral("candado"));
    m_nbytes->setObjectName(QStringLiteral("nbytes"));
    m_urll->setObjectName(QStringLiteral("urll"));

    for (QLabel *label : {m_filename, m_porciento, m_nbytes, m_urll}) {
        label->setTextFormat(Qt::PlainText);
        label->setForegroundRole(QPalette::WindowText);
    }
    for (QLabel *label : {m_filename, m_nbytes, m_urll})
        label->setIndent(2);
    m_porciento->setAlignment(Qt::AlignCenter);
    m_candado->setPixmap(lockPicture());
    m_candado->setAlignment(Qt::AlignCenter);
    m_candado->setToolTip(QStringLiteral("Archivo bloqueado"));
    m_candado->hide();
    m_line->setFrameShape(QFrame::HLine);
    m_line->setFrameShadow(QFrame::Plain);

    for (QWidget *child : {static_cast<QWidget *>(m_filename), static_cast<QWidget *>(m_avance),
                           static_cast<QWidget *>(m_porciento), static_cast<QWidget *>(m_candado),
                           static_cast<QWidget *>(m_nbytes), static_cast<QWidget *>(m_urll)})
        child->installEventFilter(this);

    // The row paints its own colours, whatever the frame around it uses.
    setBackgroundRole(QPalette::Window);
    setAutoFillBackground(true);
    setFixedHeight(twipsToPixels(RowHeight));
    paintBackground(m_baseColour);
    paintLabels(0);
}

void download::showContent(const RowContent &content)
{
    if (content.archivo != m_archivo)
        setArchivo(content.archivo);
    if (content.url != m_url)
        setUrl(content.url);
    if (content.toolTip != toolTip())
        setToolTip(content.toolTip);
    if (content.bytes != m_nbytes->text())
        setBytes(content.bytes);
    if (content.porcentaje && (*content.porcentaje != m_percent || m_porciento->text().isEmpty()))
        setPorcentaje(*content.porcentaje);
    m_avance->setParts(content.parts);
    if (content.locked != m_locked)
        setLocked(content.locked);
    if (content.status != m_status)
        showStatus(content.status);
}

// The colours follow the order the state is set in: the last of `redoend` and `Reconectando`
// decides the background, and a finished row takes the tooltip colour for good.
void download::showStatus(DownloadStatus status)
{
    m_status = status;
    switch (status) {
    case DownloadStatus::Connecting:
        setRedoend(false);
        setReconectando(true);
        break;
    case DownloadStatus::Running:
        setRedoend(false);
        setReconectando(false);
        break;
    case DownloadStatus::Finished:
        DownloadEnd();
        break;
    case DownloadStatus::Exhausted:
        setReconectando(false);
        setRedoend(true);
        break;
    }
}

void download::setLocked(bool locked)
{
    m_locked = locked;
    m_candado->setVisible(locked);
    m_porciento->setVisible(!locked);
}

void download::setPorcentaje(int percent)
{
    // Only the upper end is clamped; a negative value passes through to the text.
    m_percent = std::min(percent, 100);
    m_avance->setValue(std::max(m_percent, 0));
    m_porciento->setText(QString::number(m_percent) + QLatin1Char('%'));
}

void download::setBytes(const QString &text)
{
    m_nbytes->setText(text);
}

QString download::bytes() const
{
    return m_nbytes->text();
}

void download::setArchivo(const QString &text)
{
    m_archivo = text;
    showElided(m_filename, text);
}

void download::setUrl(const QString &text)
{
    m_url = text;
    showElided(m_urll, text);
}

void download::showElided(QLabel *label, const QString &text)
{
    const QString shown = label->fontMetrics().elidedText(text, Qt::ElideMiddle, label->width());
    label->setText(shown);
    label->setToolTip(shown == text ? QString() : text);
}

void download::setSelected(bool selected)
{
    m_selected = selected;
    paintBackground(selected ? SystemHighlight : m_baseColour);
    paintLabels(selected ? SystemHighlightText : 0);
}

// These two repaint at once, even while the row is selected; only deselecting brings the base
// colour back to a selected row.
void download::setRedoend(bool exhausted)
{
    m_redoend = exhausted;
    m_baseColour = exhausted ? 0x8080FF : 0xFFFFFF;
    paintBackground(m_baseColour);
}

void download::setReconectando(bool reconnecting)
{
    m_reconnecting = reconnecting;
    m_baseColour = reconnecting ? 0xE2FFC6 : 0xFFFFFF;
    paintBackground(m_baseColour);
}

void download::DownloadEnd()
{
    m_baseColour = SystemToolTipBack;
    paintBackground(SystemToolTipBack);
    m_finished = true;
}

void download::paintBackground(quint32 colour)
{
    QPalette palette = this->palette();
    palette.setColor(QPalette::Window, winColor(colour));
    setPalette(palette);
}

void download::paintLabels(quint32 colour)
{
    for (QLabel *label : {m_filename, m_porciento, m_nbytes, m_urll}) {
        QPalette palette = label->palette();
        palette.setColor(QPalette::WindowText, winColor(colour));
        label->setPalette(palette);
    }
}

void download::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    const RowLayout layout = rowLayout(width() * 15, PercentWidth, LockWidth);
    m_filename->setGeometry(toPixels(layout.filename));
    m_avance->setGeometry(toPixels(layout.avance).adjusted(0, 3, 0, -3));
    m_porciento->setGeometry(toPixels(layout.porciento));
    m_candado->setGeometry(toPixels(layout.candado));
    m_nbytes->setGeometry(toPixels(layout.nbytes));
    m_urll->setGeometry(toPixels(layout.urll));
    m_line->setGeometry(0, height() - 1, twipsToPixels(layout.lineEnd), 1);
    showElided(m_filename, m_archivo);
    showElided(m_urll, m_url);
}

// A press anywhere on the row belongs to the row, not to the frame behind it.
void download::mousePressEvent(QMouseEvent *event)
{
    event->accept();
}

bool download::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::MouseButtonRelease: {
        const auto *mouse = static_cast<QMouseEvent *>(event);
        Q_EMIT MouseUp(buttonNumber(mouse->button()));
        if (mouse->button() == Qt::LeftButton)
            Q_EMIT Click();
        return true;
    }
    case QEvent::MouseButtonDblClick:
        if (watched != m_candado)
            Q_EMIT DblClick();
        return true;
    default:
        return QWidget::eventFilter(watched, event);
    }
}
