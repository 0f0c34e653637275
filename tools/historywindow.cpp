#include "historywindow.h"

#include "historylog.h"
#include "wincolor.h"

#include <QScrollBar>
#include <QTextBlock>
#include <QTextEdit>

namespace {

QTextCharFormat inColour(quint32 colour)
{
    QTextCharFormat format;
    format.setForeground(winColor(colour));
    return format;
}

} // namespace

HistoryWindow::HistoryWindow(HistoryLog &log, QWidget *parent)
    : QWidget(parent), m_log(log), m_texto(new QTextEdit(this))
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
    return QRect(0, 0, std::max(0, inner.width() - twipsToPixels(120)),
                 std::max(0, inner.height() - twipsToPixels(500)));
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
    QTextCursor cursor(m_texto->document());
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(text, inColour(colour));
    if (atEnd)
        bar->setValue(bar->maximum());
}

void HistoryWindow::removeFirstLines(int count)
{
    QTextCursor cursor(m_texto->document());
    cursor.movePosition(QTextCursor::NextBlock, QTextCursor::KeepAnchor, count);
    cursor.removeSelectedText();
}
