#include "inactivewindow.h"

#include "activelist.h"
#include "commandbar.h"
#include "detailwindow.h"
#include "inactivelist.h"
#include "linkdrop.h"
#include "rowframe.h"

#include <QAction>
#include <QMenu>
#include <QToolBar>
#include <QVBoxLayout>

InactiveWindow::InactiveWindow(InactiveList &list, ActiveList &active, DetailWindow &detail,
                               QWidget *parent)
    : QWidget(parent), m_list(list), m_detail(detail), m_frame(new RowFrame(this)),
      m_menu(new QMenu(QStringLiteral("Menu2"), this))
{
    setObjectName(QStringLiteral("inactivas"));
    setWindowTitle(QStringLiteral("Descargas inactivas"));
    m_menu->setObjectName(QStringLiteral("menu2"));
    buildCommands();

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 0, 4, 4);
    layout->setSpacing(4);
    auto *toolbar = makeToolbar(this);
    addButton(toolbar, m_cancelar, "detener");
    addButton(toolbar, m_continuar, "continuar");
    toolbar->addSeparator();
    addButton(toolbar, m_bloquear, "bloquear");
    layout->addWidget(toolbar);
    layout->addWidget(m_frame, 1);
    resize(720, 320);

    m_rows = new RowList(list, *m_frame, m_menu);
    connect(&list, &InactiveList::selectionChanged, this, &InactiveWindow::updateCommands);
    connect(&list, &InactiveList::propertiesRequested, this,
            [this](int index) { m_detail.describe(inactiveSource(m_list, index)); });
    new LinkDropTarget(this,
                       [&active](const QString &address) { active.AgregarArrastrando(address); });
    updateCommands();
}

void InactiveWindow::buildCommands()
{
    InactiveList &list = m_list;
    m_continuar = makeCommand(this, "continuar2", QStringLiteral("Co&ntinuar"),
                              QStringLiteral("Continuar descarga"), QStringLiteral("continuar"));
    m_cancelar = makeCommand(this, "cancelar2", QStringLiteral("&Cancelar"),
                             QStringLiteral("Cancelar descarga"), QStringLiteral("detener"));
    m_bloquear =
        makeCommand(this, "bloquear", QStringLiteral("&Bloquear"),
                    QStringLiteral("Bloquear/desbloquear descarga"), QStringLiteral("bloquear"));
    m_propiedades =
        makeCommand(this, "propiedades2", QStringLiteral("&Propiedades"),
                    QStringLiteral("Información de la descarga"), QStringLiteral("propiedades"));

    connect(m_continuar, &QAction::triggered, &list, &InactiveList::CallContinue);
    connect(m_cancelar, &QAction::triggered, &list, &InactiveList::CallCancel);
    connect(m_bloquear, &QAction::triggered, &list, &InactiveList::bloquear);
    connect(m_propiedades, &QAction::triggered, &list, &InactiveList::CallProp);

    m_menu->addActions({m_continuar, m_cancelar, m_bloquear, m_propiedades});
}

void InactiveWindow::updateCommands()
{
    const bool selected = m_list.existe(m_list.seleccionado());
    for (QAction *command : {m_continuar, m_cancelar, m_bloquear, m_propiedades})
        command->setEnabled(selected);
}
