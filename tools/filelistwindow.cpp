#include "filelistwindow.h"

#include "toolwidgets.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QVBoxLayout>

FileListWindow::FileListWindow(ActiveList &active, InactiveList &inactive, const Settings &settings,
                               Desktop &desktop, QWidget *parent)
    : QDialog(parent), m_model(active, inactive, settings, desktop), m_url(new QLineEdit(this)),
      m_si(textList(this, "si")), m_no(textList(this, "no")), m_destdir(new QLineEdit(this))
{
    setObjectName(QStringLiteral("oldsupport"));
    setWindowTitle(QStringLiteral("Listado de archivos"));
    m_url->setObjectName(QStringLiteral("url"));
    m_destdir->setObjectName(QStringLiteral("destdir"));
    connect(m_url, &QLineEdit::textEdited, &m_model, &FileListImport::setUrl);
    connect(m_destdir, &QLineEdit::textEdited, &m_model, &FileListImport::setDestdir);

    auto *urlLabel = new QLabel(QStringLiteral("&Dirección:"), this);
    urlLabel->setBuddy(m_url);
    auto *siLabel = new QLabel(QStringLiteral("Descar&gar"), this);
    siLabel->setBuddy(m_si);
    auto *noLabel = new QLabel(QStringLiteral("&No descargar"), this);
    noLabel->setBuddy(m_no);
    auto *destLabel = new QLabel(QStringLiteral("Descargar a la &carpeta:"), this);
    destLabel->setBuddy(m_destdir);

    auto *tosi = toolButton(this, "tosi", QStringLiteral("<"), QStringLiteral("Pasar a Descargar"));
    auto *tono =
        toolButton(this, "tono", QStringLiteral(">"), QStringLiteral("Pasar a No descargar"));
    auto *brdir =
        toolButton(this, "brdir", QStringLiteral("..."), QStringLiteral("Elegir carpeta"));
    auto *addtolist =
        toolButton(this, "addtolist", QStringLiteral("Agregar a la lista de descargas"));
    connect(tosi, &QPushButton::clicked, this, [this] { m_model.tosi(selectedRow(m_no)); });
    connect(tono, &QPushButton::clicked, this, [this] { m_model.tono(selectedRow(m_si)); });
    connect(brdir, &QPushButton::clicked, &m_model, &FileListImport::brdir);
    connect(addtolist, &QPushButton::clicked, this, [this] {
        m_model.addtolist();
        accept();
    });

    auto *address = new QHBoxLayout;
    address->addWidget(urlLabel);
    address->addWidget(m_url, 1);
    auto *moves = new QVBoxLayout;
    moves->addStretch();
    moves->addWidget(tosi);
    moves->addWidget(tono);
    moves->addStretch();
    auto *lists = new QGridLayout;
    lists->addWidget(siLabel, 0, 0);
    lists->addWidget(noLabel, 0, 2);
    lists->addWidget(m_si, 1, 0);
    lists->addLayout(moves, 1, 1);
    lists->addWidget(m_no, 1, 2);
    lists->setColumnStretch(0, 1);
    lists->setColumnStretch(2, 1);
    auto *destination = new QHBoxLayout;
    destination->addWidget(destLabel);
    destination->addWidget(m_destdir, 1);
    destination->addWidget(brdir);
    auto *bottom = new QHBoxLayout;
    bottom->addStretch();
    bottom->addWidget(addtolist);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(address);
    layout->addLayout(lists, 1);
    layout->addLayout(destination);
    layout->addLayout(bottom);
    resize(560, 420);

    connect(&m_model, &FileListImport::changed, this, &FileListWindow::refresh);
    refresh();
}

void FileListWindow::loadlist()
{
    if (m_model.loadlist())
        exec();
}

void FileListWindow::refresh()
{
    if (m_url->text() != m_model.url())
        m_url->setText(m_model.url());
    if (m_destdir->text() != m_model.destdir())
        m_destdir->setText(m_model.destdir());
    showTexts(m_si, m_model.si());
    showTexts(m_no, m_model.no());
}
