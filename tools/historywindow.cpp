#include "historywindow.h"

#include "historylog.h"

#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTextBlock>

namespace {

// History colours are 0x00BBGGRR, as the log file keeps them.
QTextCharFormat inColour(quint32 colour)
{
    QTextCharFormat format;
    format.setForeground(
        QColor(int(colour & 0xFF), int((colour >> 8) & 0xFF), int((colour >> 16) & 0xFF)));
    return format;
}

} // namespace

HistoryWindow::HistoryWindow(HistoryLog &log, QWidget *parent)
    : QWidget(parent), m_log(log), m_texto(new QPlainTextEdit(this))
{
    setObjectName(QStringLiteral("historial"));
    setWindowTitle(QStringLiteral("Historial"));
    m_texto->setObjectName(QStringLiteral("texto"));
    m_texto->setAccessibleName(QStringLiteral("Historial"));
    m_texto->setReadOnly(true);
    m_texto->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_texto->setUndoRedoEnabled(false);
    connect(&m_log, &HistoryLog::reset, this, &HistoryWindow::showAll);
    connect(&m_log, &HistoryLog::appended, this, &HistoryWindow::showAppended);
    connect(&m_log, &HistoryLog::linesRemoved, this, &HistoryWindow::removeFirstLines);
    showAll();
    resize(640, 360);
}

QRect HistoryWindow::textoGeometry(const QSize &inner)
{
    // The box sits centred across, at the same distance from the top as from the sides: 120
    // twips narrower and 500 shorter than the window, at 15 twips to the pixel.
    constexpr int Margin = 4;
    return QRect(Margin, Margin, std::max(0, inner.width() - 2 * Margin),
                 std::max(0, inner.height() - 33));
}

void HistoryWindow::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    m_texto->setGeometry(textoGeometry(size()));
}

void HistoryWindow::showAll()
{
    m_texto->clear();
    QTextCursor cursor(m_texto->document());
    cursor.beginEditBlock();
    const RtfDocument document = m_log.document();
    for (const RtfRun &run : document.runs)
        cursor.insertText(run.text, inColour(run.colour));
    cursor.endEditBlock();
    m_texto->verticalScrollBar()->setValue(m_texto->verticalScrollBar()->maximum());
}

void HistoryWindow::showAppended(const QString &text, quint32 colour)
{
    // Follow the end only when the person is looking at it.
    QScrollBar *bar = m_texto->verticalScrollBar();
    const bool atEnd = bar->value() == bar->maximum();
    // Positions rather than cursor moves: a move lays out the line it starts from.
    QTextDocument *document = m_texto->document();
    QTextCursor cursor(document);
    cursor.setPosition(document->characterCount() - 1);
    cursor.insertText(text, inColour(colour));
    if (atEnd)
        bar->setValue(bar->maximum());
}

void HistoryWindow::removeFirstLines(int count)
{
    QTextDocument *document = m_texto->document();
    const QTextBlock next = document->findBlockByNumber(count);
    QTextCursor cursor(document);
    cursor.beginEditBlock();
    cursor.setPosition(next.isValid() ? next.position() : document->characterCount() - 1,
                       QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
    cursor.endEditBlock();
}
