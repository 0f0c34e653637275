#include "folderwindow.h"

#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QFileSystemModel>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeView>

FolderWindow::FolderWindow(Desktop &desktop, std::function<bool()> getunload, QWidget *parent)
    : QDialog(parent), m_chooser(desktop, std::move(getunload)), m_drive(new QComboBox(this)),
      m_model(new QFileSystemModel(this)), m_dir(new QTreeView(this)), m_ruta(new QLabel(this))
{
    setObjectName(QStringLiteral("folder"));
    setWindowTitle(QStringLiteral("Seleccionar carpeta"));
    m_drive->setObjectName(QStringLiteral("drive"));
    m_dir->setObjectName(QStringLiteral("dir"));
    m_ruta->setObjectName(QStringLiteral("ruta"));
    m_ruta->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_ruta->setWordWrap(true);

    m_model->setFilter(QDir::Dirs | QDir::NoDotAndDotDot);
    m_dir->setModel(m_model);
    m_dir->setHeaderHidden(true);
    for (int column = 1; column < m_model->columnCount(); ++column)
        m_dir->hideColumn(column);

    auto *newfolder = new QPushButton(QStringLiteral("Nueva carpeta"), this);
    newfolder->setObjectName(QStringLiteral("newfolder"));
    newfolder->setAutoDefault(false);
    auto *acept = new QPushButton(QStringLiteral("Aceptar"), this);
    acept->setObjectName(QStringLiteral("acept"));
    acept->setDefault(true);

    auto *driveLabel = new QLabel(QStringLiteral("&Unidad:"), this);
    driveLabel->setBuddy(m_drive);
    auto *dirLabel = new QLabel(QStringLiteral("&Carpeta:"), this);
    dirLabel->setBuddy(m_dir);

    auto *grid = new QGridLayout;
    grid->addWidget(driveLabel, 0, 0);
    grid->addWidget(m_drive, 0, 1);
    grid->addWidget(dirLabel, 1, 0);
    grid->addWidget(m_ruta, 1, 1);
    grid->setColumnStretch(1, 1);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(newfolder);
    buttons->addStretch();
    buttons->addWidget(acept);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addWidget(m_dir, 1);
    layout->addLayout(buttons);
    resize(420, 400);

    connect(m_drive, &QComboBox::activated, this, &FolderWindow::driveChosen);
    connect(m_dir->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &FolderWindow::folderChosen);
    connect(m_model, &QFileSystemModel::directoryLoaded, this, &FolderWindow::folderLoaded);
    connect(m_model, &QFileSystemModel::layoutChanged, this, &FolderWindow::folderSorted);
    connect(newfolder, &QPushButton::clicked, this, &FolderWindow::makeFolder);
    connect(acept, &QPushButton::clicked, this, &QDialog::accept);

    fillDrives();
    showChoice();
}

void FolderWindow::fillDrives()
{
    m_drive->clear();
    for (const FolderChooser::Drive &drive : FolderChooser::drives())
        m_drive->addItem(drive.label, drive.root);
}

void FolderWindow::goTo(const QString &folder)
{
    fillDrives();
    m_chooser.goTo(folder);
    showChoice();
}

void FolderWindow::reject()
{
    if (m_chooser.mayClose())
        QDialog::reject();
}

void FolderWindow::driveChosen(int index)
{
    // A drive that cannot be read is ignored: the tree stays where it was.
    m_chooser.setDrive(m_drive->itemData(index).toString());
    showChoice();
}

void FolderWindow::folderChosen(const QModelIndex &index)
{
    if (!index.isValid())
        return;
    m_chooser.setPath(m_model->filePath(index));
    m_ruta->setText(QDir::toNativeSeparators(m_chooser.path()));
}

void FolderWindow::folderLoaded(const QString &folder)
{
    if (folder != m_scrollWhenLoaded)
        return;
    // The folder's entries are sorted a moment after they are read: shown now, and once more
    // after the sort.
    m_scrollWhenLoaded.clear();
    m_scrollAfterSort = true;
    m_dir->scrollTo(m_dir->currentIndex(), QAbstractItemView::PositionAtCenter);
}

void FolderWindow::folderSorted()
{
    if (!m_scrollAfterSort)
        return;
    m_scrollAfterSort = false;
    m_dir->scrollTo(m_dir->currentIndex(), QAbstractItemView::PositionAtCenter);
}

void FolderWindow::makeFolder()
{
    // The tree follows the file system by itself.
    m_chooser.newfolder();
}

void FolderWindow::showChoice()
{
    const QString drive = m_chooser.drive();
    const QString path = m_chooser.path();
    m_drive->setCurrentIndex(m_drive->findData(drive));
    m_model->setRootPath(drive);
    m_dir->setRootIndex(m_model->index(drive));
    if (path == drive) {
        m_dir->setCurrentIndex(QModelIndex());
    } else {
        const QModelIndex index = m_model->index(path);
        m_dir->setCurrentIndex(index);
        for (QModelIndex up = index.parent(); up.isValid() && up != m_dir->rootIndex();
             up = up.parent())
            m_dir->expand(up);
        m_dir->scrollTo(index);
        // The folders around it are read in the background: it is shown again once they are.
        m_scrollWhenLoaded = QFileInfo(path).path();
    }
    m_chooser.setPath(path);
    m_ruta->setText(QDir::toNativeSeparators(path));
}
