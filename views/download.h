#pragma once

#include "downloadlist.h"

#include <QList>
#include <QProgressBar>
#include <QRect>
#include <QWidget>
#include <utility>

class QFrame;
class QLabel;

// Where the children of a row go for a row width, in twips: four equal columns around the
// fixed-width percentage column.
struct RowLayout
{
    int q = 0; // column width; negative when the row is narrower than the percentage column
    QRect filename, avance, porciento, candado, nbytes, urll;
    int lineEnd = 0;
};
RowLayout rowLayout(int rowWidth, int percentWidth, int lockWidth);

// The progress bar of a row. A download on several connections fills it where its fetched
// stretches lie, not from the start: the percentage alone would show a file fetched from both
// ends as fetched from the start. Without stretches it is a plain progress bar.
class PartsBar final : public QProgressBar
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PartsBar)

public:
    using Parts = QList<std::pair<double, double>>;

    explicit PartsBar(QWidget *parent = nullptr);

    // Repaints only when they differ from those shown.
    void setParts(const Parts &parts);
    const Parts &parts() const { return m_parts; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    Parts m_parts;
};

// One download drawn as one row: file name, progress, percentage (or a lock), size and URL, in
// the colours of its state.
class download final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(download)

public:
    static constexpr int RowHeight = 300;    // twips
    static constexpr int PercentWidth = 675; // twips
    static constexpr int LockWidth = 240;    // twips

    explicit download(QWidget *parent = nullptr);

    // Shows what the list tells of the download, changing only what differs.
    void showContent(const RowContent &content);

    void setLocked(bool locked);
    bool locked() const { return m_locked; }
    void setPorcentaje(int percent);
    int porcentaje() const { return m_percent; }
    void setBytes(const QString &text);
    QString bytes() const;
    void setArchivo(const QString &text);
    QString archivo() const { return m_archivo; }
    void setUrl(const QString &text);
    QString url() const { return m_url; }
    void setSelected(bool selected);
    bool selected() const { return m_selected; }
    void setFinalizado(bool finished) { m_finished = finished; }
    bool finalizado() const { return m_finished; }
    void setRedoend(bool exhausted);
    bool redoend() const { return m_redoend; }
    void setReconectando(bool reconnecting);
    bool reconectando() const { return m_reconnecting; }
    void DownloadEnd();

Q_SIGNALS:
    void Click();
    void DblClick();
    void MouseUp(int button);

protected:
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void paintBackground(quint32 colour);
    void paintLabels(quint32 colour);
    void showStatus(DownloadStatus status);
    // Long paths and addresses lose their middle, so both ends stay readable.
    void showElided(QLabel *label, const QString &text);

    QLabel *m_filename;
    PartsBar *m_avance;
    QLabel *m_porciento;
    QLabel *m_candado;
    QLabel *m_nbytes;
    QLabel *m_urll;
    QFrame *m_line;

    quint32 m_baseColour = 0xFFFFFF;
    QString m_archivo = QStringLiteral("Archivo"); // the design captions
    QString m_url = QStringLiteral("URL");
    int m_percent = 0;
    DownloadStatus m_status = DownloadStatus::Running;
    bool m_locked = false;
    bool m_selected = false;
    bool m_finished = false;
    bool m_redoend = false;
    bool m_reconnecting = false;
};
