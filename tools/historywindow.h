#pragma once

#include <QRect>
#include <QWidget>

class HistoryLog;
class QPlainTextEdit;

// The window "historial": the history log in colour in the read-only box `texto`, which the
// person can select and copy from. It follows the log line by line instead of redrawing it.
class HistoryWindow final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(HistoryWindow)

public:
    explicit HistoryWindow(HistoryLog &log, QWidget *parent = nullptr);

    // Where `texto` goes in an inner area of `inner`: 120 twips narrower, 500 twips shorter.
    static QRect textoGeometry(const QSize &inner);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void showAll();
    void showAppended(const QString &text, quint32 colour);
    void removeFirstLines(int count);

    HistoryLog &m_log;
    QPlainTextEdit *m_texto;
};
