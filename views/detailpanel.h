#pragma once

#include <QGroupBox>

class QCheckBox;
class QLineEdit;
struct DownloadDetails;

// The panel `inf` of the active window: what the active list tells of the selected download.
class DetailPanel final : public QGroupBox
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(DetailPanel)

public:
    explicit DetailPanel(QWidget *parent = nullptr);

    void showDetails(const DownloadDetails &details);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    QLineEdit *field(const char *name);
    // `field`, made wide enough to show `longest` whole.
    static QLineEdit *fitTo(QLineEdit *field, const QString &longest);
    // A long name loses its middle rather than widen the window.
    void showTitle();

    QString m_title;

    QLineEdit *m_urlt;
    QLineEdit *m_bytest;
    QLineEdit *m_porcientot;
    QLineEdit *m_velmedia;
    QLineEdit *m_tiempou;
    QLineEdit *m_tiemporest;
    QCheckBox *m_allowredoc;
};
