#pragma once

#include "downloadrow.h"

#include <QBasicTimer>
#include <QRect>
#include <QWidget>

class QFrame;
class QLabel;
class QProgressBar;

// Where the children of a row go for a row width, in twips: four equal columns around the
// fixed-width percentage column.
struct RowLayout
{
    int q = 0; // column width; negative when the row is narrower than the percentage column
    QRect filename, avance, porciento, candado, nbytes, urll;
    int lineEnd = 0;
};
RowLayout rowLayout(int rowWidth, int percentWidth, int lockWidth);

// One download drawn as one row: file name, progress, percentage (or a lock), size and URL.
// The engine writes the progress on every chunk: those writes only store the value, and the
// labels and the bar take it up at most every RefreshMs.
class download final : public QWidget, public DownloadRow
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(download)

public:
    static constexpr int RowHeight = 300;    // twips
    static constexpr int PercentWidth = 675; // twips
    static constexpr int LockWidth = 240;    // twips
    static constexpr int RefreshMs = 100;

    explicit download(QWidget *parent = nullptr);

    void setLocked(bool locked) override;
    bool locked() const override { return m_locked; }
    void setPorcentaje(int percent) override;
    int porcentaje() const override { return m_percent; }
    void setBytes(qint64 count, SizeUnits units) override;
    QString bytes() const override { return rowBytesText(m_bytes, m_units); }
    void setArchivo(const QString &text) override;
    QString archivo() const override { return m_archivo; }
    void setUrl(const QString &text) override;
    QString url() const override { return m_url; }
    void setSelected(bool selected) override;
    bool selected() const override { return m_selected; }
    void setFinalizado(bool finished) override { m_finished = finished; }
    bool finalizado() const override { return m_finished; }
    void setRedoend(bool exhausted) override;
    bool redoend() const override { return m_redoend; }
    void setReconectando(bool reconnecting) override;
    bool reconectando() const override { return m_reconnecting; }
    void setToolTip(const QString &text) override { QWidget::setToolTip(text); }
    void DownloadEnd() override;

    // Shows the progress written since the last refresh; the refresh timer calls it.
    void refresh();

Q_SIGNALS:
    void Click();
    void DblClick();
    void MouseUp(int button);

protected:
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void timerEvent(QTimerEvent *event) override;

private:
    void paintBackground(quint32 colour);
    void paintLabels(quint32 colour);
    void scheduleRefresh();
    // Long paths and addresses lose their middle, so both ends stay readable.
    void showElided(QLabel *label, const QString &text);

    QLabel *m_filename;
    QProgressBar *m_avance;
    QLabel *m_porciento;
    QLabel *m_candado;
    QLabel *m_nbytes;
    QLabel *m_urll;
    QFrame *m_line;

    quint32 m_baseColour = 0xFFFFFF;
    QString m_archivo = QStringLiteral("Archivo"); // the design captions
    QString m_url = QStringLiteral("URL");
    qint64 m_bytes = -1;
    SizeUnits m_units = SizeUnits::FromThreshold;
    int m_percent = 0;
    bool m_percentShown = true;
    QBasicTimer m_refresh;
    bool m_locked = false;
    bool m_selected = false;
    bool m_finished = false;
    bool m_redoend = false;
    bool m_reconnecting = false;
};
