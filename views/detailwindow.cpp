#include "detailwindow.h"

#include "tarta.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

DetailWindow::DetailWindow(QWidget *parent)
    : QWidget(parent, Qt::Window), m_url(field("url")), m_destino(field("destino")),
      m_totalsize(field("totalsize")), m_actsize(field("actsize")), m_tiempo(field("tiempo")),
      m_estado(field("estado")), m_downloaded(new QLabel(this)), m_conexiones(new QLabel(this)),
      m_allowredo(new QCheckBox(QStringLiteral("Permite reanudar descargas"), this)),
      m_tarta(new Tarta(this))
{
    setObjectName(QStringLiteral("detallado"));
    setWindowTitle(QStringLiteral("Información de "));
    m_downloaded->setObjectName(QStringLiteral("downloaded"));
    m_downloaded->setAlignment(Qt::AlignCenter);
    m_downloaded->setTextFormat(Qt::PlainText);
    // Only while the download runs on several connections.
    m_conexiones->setObjectName(QStringLiteral("conexiones"));
    m_conexiones->setAlignment(Qt::AlignCenter);
    m_conexiones->setTextFormat(Qt::PlainText);
    m_conexiones->hide();
    m_allowredo->setObjectName(QStringLiteral("allowredo"));
    // It shows what the server allows; the person cannot change that.
    m_allowredo->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_allowredo->setFocusPolicy(Qt::NoFocus);

    auto *form = new QFormLayout;
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    const auto addRow = [this, form](const QString &caption, QLineEdit *edit) {
        auto *label = new QLabel(caption, this);
        label->setBuddy(edit);
        form->addRow(label, edit);
    };
    addRow(QStringLiteral("URL:"), m_url);
    addRow(QStringLiteral("Destino:"), m_destino);
    addRow(QStringLiteral("Tamaño total:"), m_totalsize);
    addRow(QStringLiteral("Descargado:"), m_actsize);
    addRow(QStringLiteral("Tiempo:"), m_tiempo);
    addRow(QStringLiteral("Estado:"), m_estado);
    form->addRow(m_allowredo);

    auto *pie = new QVBoxLayout;
    pie->addWidget(m_tarta, 1);
    pie->addWidget(m_downloaded);
    pie->addWidget(m_conexiones);
    auto *layout = new QHBoxLayout(this);
    layout->addLayout(form, 3);
    layout->addLayout(pie, 1);
    resize(560, 240);

    m_refresh.setInterval(1000);
    connect(&m_refresh, &QTimer::timeout, &m_model, &DetailModel::refresh);
    connect(&m_model, &DetailModel::changed, this, &DetailWindow::showInfo);
}

QLineEdit *DetailWindow::field(const char *name)
{
    auto *edit = new QLineEdit(this);
    edit->setObjectName(QLatin1String(name));
    edit->setReadOnly(true);
    edit->setAcceptDrops(false);
    return edit;
}

void DetailWindow::describe(DetailModel::Source source)
{
    m_model.describe(std::move(source));
    show();
    raise();
    activateWindow();
}

void DetailWindow::showInfo()
{
    const DownloadInfo &info = m_model.info();
    setWindowTitle(info.caption);
    m_url->setText(info.url);
    m_destino->setText(info.destino);
    m_totalsize->setText(info.totalsize);
    m_actsize->setText(info.actsize);
    m_tiempo->setText(info.tiempo);
    m_estado->setText(info.estado);
    m_downloaded->setText(info.downloaded);
    m_conexiones->setText(info.conexiones);
    m_conexiones->setAccessibleName(info.conexiones);
    m_conexiones->setVisible(!info.conexiones.isEmpty());
    m_allowredo->setChecked(info.allowredo);
    m_tarta->setProportion(info.done);
    // Long addresses show their beginning, where the host is.
    m_url->setCursorPosition(0);
    m_destino->setCursorPosition(0);
}

void DetailWindow::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    m_refresh.start();
}

void DetailWindow::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    m_refresh.stop();
}
