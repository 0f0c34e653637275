#include "detailpanel.h"

#include "activelist.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>

DetailPanel::DetailPanel(QWidget *parent)
    : QGroupBox(parent), m_urlt(field("urlt")), m_bytest(field("bytest")),
      m_porcientot(field("porcientot")), m_velmedia(field("velmedia")), m_tiempou(field("tiempou")),
      m_tiemporest(field("tiemporest")),
      m_allowredoc(new QCheckBox(QStringLiteral("Permite reanudar descargas"), this))
{
    setObjectName(QStringLiteral("inf"));
    m_allowredoc->setObjectName(QStringLiteral("allowredoc"));
    // It shows what the server allows; the person cannot change that.
    m_allowredoc->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_allowredoc->setFocusPolicy(Qt::NoFocus);
    m_tiemporest->setToolTip(QStringLiteral("Tiempo restante (estimado)"));

    auto *grid = new QGridLayout(this);
    const auto place = [this, grid](const QString &caption, QLineEdit *edit, int row, int column,
                                    int span) {
        auto *label = new QLabel(caption, this);
        label->setBuddy(edit);
        label->setToolTip(edit->toolTip());
        grid->addWidget(label, row, column);
        grid->addWidget(edit, row, column + 1, 1, span);
    };
    place(QStringLiteral("URL:"), m_urlt, 0, 0, 5);
    place(QStringLiteral("Bytes descargados/total:"), m_bytest, 1, 0, 1);
    place(QStringLiteral("Progreso:"), m_porcientot, 1, 2, 1);
    place(QStringLiteral("Velocidad media:"), m_velmedia, 1, 4, 1);
    place(QStringLiteral("Tiempo utilizado:"), m_tiempou, 2, 0, 1);
    place(QStringLiteral("Tiempo restante:"), m_tiemporest, 2, 2, 1);
    grid->addWidget(m_allowredoc, 2, 4, 1, 2);
    grid->setColumnStretch(1, 2);
    grid->setColumnStretch(3, 1);
    grid->setColumnStretch(5, 1);
    showDetails(DownloadDetails());
}

QLineEdit *DetailPanel::field(const char *name)
{
    auto *edit = new QLineEdit(this);
    edit->setObjectName(QLatin1String(name));
    edit->setReadOnly(true);
    edit->setAcceptDrops(false);
    return edit;
}

void DetailPanel::showDetails(const DownloadDetails &details)
{
    m_title = details.inf.isEmpty() ? QStringLiteral("Información detallada") : details.inf;
    showTitle();
    m_urlt->setText(details.urlt);
    m_urlt->setCursorPosition(0);
    m_bytest->setText(details.bytest);
    m_porcientot->setText(details.porcientot);
    m_velmedia->setText(details.velmedia);
    m_tiempou->setText(details.tiempou);
    m_tiemporest->setText(details.tiemporest);
    m_allowredoc->setChecked(details.allowredoc);
}

void DetailPanel::showTitle()
{
    const int room = std::max(0, width() - 4 * fontMetrics().averageCharWidth());
    setTitle(fontMetrics().elidedText(m_title, Qt::ElideMiddle, room));
}

void DetailPanel::resizeEvent(QResizeEvent *event)
{
    QGroupBox::resizeEvent(event);
    showTitle();
}
