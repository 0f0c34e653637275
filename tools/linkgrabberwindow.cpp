#include "linkgrabberwindow.h"

#include "toolwidgets.h"

#include <QClipboard>
#include <QDropEvent>
#include <QGridLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMimeData>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

LinkGrabberWindow::LinkGrabberWindow(ActiveList &active, InactiveList &inactive,
                                     const Settings &settings, Desktop &desktop,
                                     const ProgramFolder &folder, QWidget *parent)
    : QDialog(parent), m_model(active, inactive, settings, desktop, folder)
{
    setObjectName(QStringLiteral("listado"));
    setWindowTitle(LinkGrabber::Caption);
    m_refresh.setSingleShot(true);
    m_refresh.setInterval(200);
    connect(&m_refresh, &QTimer::timeout, this, &LinkGrabberWindow::refresh);

    auto *addtolist =
        toolButton(this, "addtolist", QStringLiteral("Agregar a la lista de descargas"));
    connect(addtolist, &QPushButton::clicked, this, [this] {
        m_model.addtolist();
        accept();
    });
    auto *bottom = new QHBoxLayout;
    bottom->addStretch();
    bottom->addWidget(addtolist);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(addressRow());
    layout->addLayout(listsRow(), 1);
    layout->addLayout(endingsRow());
    layout->addLayout(destinationRow());
    layout->addLayout(bottom);
    resize(700, 500);

    connect(&m_model, &LinkGrabber::changed, this, &LinkGrabberWindow::modelChanged);
    refresh();
}

QLayout *LinkGrabberWindow::addressRow()
{
    m_direcc = new QLineEdit(this);
    m_direcc->setObjectName(QStringLiteral("direcc"));
    m_direcc->installEventFilter(this);
    connect(m_direcc, &QLineEdit::textEdited, &m_model, &LinkGrabber::setDirecc);
    auto *label = new QLabel(QStringLiteral("&Dirección del documento:"), this);
    label->setBuddy(m_direcc);
    m_obtener = toolButton(this, "obtener", QStringLiteral("Procesar..."));
    // Enter in the address fetches it.
    m_obtener->setDefault(true);
    connect(m_obtener, &QPushButton::clicked, &m_model, &LinkGrabber::obtener);

    auto *address = new QHBoxLayout;
    address->addWidget(m_direcc, 1);
    address->addWidget(m_obtener);
    auto *options = new QHBoxLayout;
    options->addWidget(
        option("linkonly", QStringLiteral("&Vínculos"), LinkGrabber::Extract::linkonly));
    options->addWidget(
        option("imgonly", QStringLiteral("&Imágenes"), LinkGrabber::Extract::imgonly));
    options->addWidget(
        option("linkimg", QStringLiteral("Vínculos &e imágenes"), LinkGrabber::Extract::linkimg));
    options->addStretch();

    auto *layout = new QVBoxLayout;
    layout->addWidget(label);
    layout->addLayout(address);
    layout->addLayout(options);
    return layout;
}

QLayout *LinkGrabberWindow::listsRow()
{
    m_si = textList(this, "si");
    m_no = textList(this, "no");
    auto *siLabel = new QLabel(QStringLiteral("Descar&gar"), this);
    siLabel->setBuddy(m_si);
    auto *noLabel = new QLabel(QStringLiteral("&No descargar"), this);
    noLabel->setBuddy(m_no);
    auto *tosi = toolButton(this, "tosi", QStringLiteral("<"), QStringLiteral("Pasar a Descargar"));
    auto *tono =
        toolButton(this, "tono", QStringLiteral(">"), QStringLiteral("Pasar a No descargar"));
    // Rows are those shown: the lists are brought up to date at once, even during a scan.
    connect(tosi, &QPushButton::clicked, this, [this] {
        m_model.tosi(selectedRow(m_no));
        refresh();
    });
    connect(tono, &QPushButton::clicked, this, [this] {
        m_model.tono(selectedRow(m_si));
        refresh();
    });

    auto *moves = new QVBoxLayout;
    moves->addStretch();
    moves->addWidget(tosi);
    moves->addWidget(tono);
    moves->addStretch();
    auto *grid = new QGridLayout;
    grid->addWidget(siLabel, 0, 0);
    grid->addWidget(noLabel, 0, 2);
    grid->addWidget(m_si, 1, 0);
    grid->addLayout(moves, 1, 1);
    grid->addWidget(m_no, 1, 2);
    grid->setColumnStretch(0, 1);
    grid->setColumnStretch(2, 1);
    return grid;
}

QLayout *LinkGrabberWindow::endingsRow()
{
    m_ext = textList(this, "ext");
    m_ext->setMaximumHeight(m_ext->fontMetrics().height() * 6);
    auto *label = new QLabel(QStringLiteral("Añadir &ficheros de extensión:"), this);
    label->setBuddy(m_ext);
    auto *hint = new QLabel(QStringLiteral("Deje en blanco para todos"), this);
    auto *adext = toolButton(this, "adext", QStringLiteral("&Añadir"));
    auto *delext = toolButton(this, "delext", QStringLiteral("E&liminar"));
    connect(adext, &QPushButton::clicked, &m_model, &LinkGrabber::adext);
    connect(delext, &QPushButton::clicked, this, [this] {
        m_model.delext(selectedRow(m_ext));
        refresh();
    });

    auto *buttons = new QVBoxLayout;
    buttons->addWidget(adext);
    buttons->addWidget(delext);
    buttons->addWidget(hint);
    buttons->addStretch();
    auto *row = new QHBoxLayout;
    row->addWidget(m_ext, 1);
    row->addLayout(buttons);
    row->addStretch(1);
    auto *layout = new QVBoxLayout;
    layout->addWidget(label);
    layout->addLayout(row);
    return layout;
}

QLayout *LinkGrabberWindow::destinationRow()
{
    m_destdir = new QLineEdit(this);
    m_destdir->setObjectName(QStringLiteral("destdir"));
    connect(m_destdir, &QLineEdit::textEdited, &m_model, &LinkGrabber::setDestdir);
    auto *label = new QLabel(QStringLiteral("Descargar a la &carpeta:"), this);
    label->setBuddy(m_destdir);
    auto *brdir =
        toolButton(this, "brdir", QStringLiteral("..."), QStringLiteral("Elegir carpeta"));
    connect(brdir, &QPushButton::clicked, &m_model, &LinkGrabber::brdir);

    auto *layout = new QHBoxLayout;
    layout->addWidget(label);
    layout->addWidget(m_destdir, 1);
    layout->addWidget(brdir);
    return layout;
}

QRadioButton *LinkGrabberWindow::option(const char *name, const QString &text,
                                        LinkGrabber::Extract extract)
{
    auto *button = new QRadioButton(text, this);
    button->setObjectName(QLatin1String(name));
    connect(button, &QRadioButton::toggled, this, [this, extract](bool on) {
        if (on)
            m_model.setExtract(extract);
    });
    m_options.emplace_back(button, extract);
    return button;
}

void LinkGrabberWindow::showEvent(QShowEvent *event)
{
    if (!event->spontaneous())
        m_model.load(QGuiApplication::clipboard()->text());
    QDialog::showEvent(event);
}

void LinkGrabberWindow::hideEvent(QHideEvent *event)
{
    if (!event->spontaneous())
        m_model.unload();
    QDialog::hideEvent(event);
}

bool LinkGrabberWindow::eventFilter(QObject *watched, QEvent *event)
{
    // A dropped text replaces the address instead of going in where it was dropped.
    if (watched == m_direcc && event->type() == QEvent::Drop) {
        auto *drop = static_cast<QDropEvent *>(event);
        if (drop->mimeData()->hasText()) {
            m_model.setDirecc(drop->mimeData()->text());
            drop->acceptProposedAction();
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

void LinkGrabberWindow::modelChanged()
{
    if (!m_model.scanning())
        refresh();
    else if (!m_refresh.isActive())
        m_refresh.start();
}

void LinkGrabberWindow::refresh()
{
    m_refresh.stop();
    setWindowTitle(m_model.caption());
    if (m_direcc->text() != m_model.direcc())
        m_direcc->setText(m_model.direcc());
    m_direcc->setEnabled(m_model.direccEnabled());
    m_obtener->setEnabled(m_model.obtenerEnabled());
    for (const auto &[button, extract] : m_options) {
        if (extract == m_model.extract()) {
            const QSignalBlocker blocker(button);
            button->setChecked(true);
        }
    }
    if (m_destdir->text() != m_model.destdir())
        m_destdir->setText(m_model.destdir());
    showTexts(m_si, m_model.si());
    showTexts(m_no, m_model.no());
    showTexts(m_ext, m_model.ext());
}
