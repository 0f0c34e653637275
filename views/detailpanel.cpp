#include "detailpanel.h"

#include "activelist.h"
#include "flowlayout.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QStyle>
#include <QStyleOptionFrame>

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

    // Each field is as wide as the longest text it shows for a 10 GiB download; a narrow panel
    // puts its fields on more lines rather than cut them.
    auto *flow = new FlowLayout(this);
    flow->setSpacing(6);
    const auto place = [this, flow](const QString &caption, QWidget *field) {
        auto *pair = new QWidget(this);
        auto *line = new QHBoxLayout(pair);
        line->setContentsMargins(0, 0, 0, 0);
        auto *label = new QLabel(caption, pair);
        label->setBuddy(field);
        label->setToolTip(field->toolTip());
        line->addWidget(label);
        line->addWidget(field, 1);
        flow->addWidget(pair);
        return pair;
    };
    place(QStringLiteral("URL:"), m_urlt)
        ->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    place(QStringLiteral("Bytes descargados/total:"),
          fitTo(m_bytest, QStringLiteral("10737418240/10737418240")));
    place(QStringLiteral("Progreso:"), fitTo(m_porcientot, QStringLiteral("99.99%")));
    place(QStringLiteral("Velocidad media:"), fitTo(m_velmedia, QStringLiteral("9999 Kb/seg")));
    place(QStringLiteral("Tiempo utilizado:"), fitTo(m_tiempou, QStringLiteral("99:59:59")));
    place(QStringLiteral("Tiempo restante:"), fitTo(m_tiemporest, QStringLiteral("99:59:59")));
    flow->addWidget(m_allowredoc);
    showDetails(DownloadDetails());
}

QLineEdit *DetailPanel::fitTo(QLineEdit *field, const QString &longest)
{
    // What the field needs around its text, measured as the field measures itself: the style's
    // frame, the text margins, the side margins of 2 pixels, the bearings and the cursor.
    const QFontMetrics metrics(field->font());
    const QMargins text = field->textMargins();
    const int width = metrics.horizontalAdvance(longest) + text.left() + text.right() + 2 * 2 + 1 +
                      std::max(0, -metrics.minLeftBearing()) +
                      std::max(0, -metrics.minRightBearing());
    QStyleOptionFrame frame;
    frame.initFrom(field);
    frame.lineWidth = field->style()->pixelMetric(QStyle::PM_DefaultFrameWidth, &frame, field);
    frame.state |= QStyle::State_Sunken;
    field->setMinimumWidth(
        field->style()
            ->sizeFromContents(QStyle::CT_LineEdit, &frame, QSize(width, metrics.height()), field)
            .width());
    return field;
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
