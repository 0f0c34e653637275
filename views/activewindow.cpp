#include "activewindow.h"

#include "activelist.h"
#include "commandbar.h"
#include "detailpanel.h"
#include "detailwindow.h"
#include "linkdrop.h"
#include "rowframe.h"

#include <QAction>
#include <QMenu>
#include <QToolBar>
#include <QVBoxLayout>

ActiveWindow::ActiveWindow(ActiveList &list, DetailWindow &detail, QWidget *parent)
    : QWidget(parent), m_list(list), m_detail(detail), m_frame(new RowFrame(this)),
      m_inf(new DetailPanel(this)), m_menu(new QMenu(QStringLiteral("Menu"), this))
{
    setObjectName(QStringLiteral("activas"));
    setWindowTitle(QStringLiteral("Descargas activas"));
    m_menu->setObjectName(QStringLiteral("menu"));
    buildCommands();

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 0, 4, 4);
    layout->setSpacing(4);
    auto *toolbar = makeToolbar(this);
    addButton(toolbar, m_cancelar, "detener");
    addButton(toolbar, m_pausar, "pausar");
    addButton(toolbar, m_continuar, "continuar");
    toolbar->addSeparator();
    addButton(toolbar, m_delend, "delend");
    toolbar->addSeparator();
    addButton(toolbar, m_ejecutar, "open");
    addButton(toolbar, m_antivirus, "antivirus");
    toolbar->addSeparator();
    addButton(toolbar, m_apagar, "apagar");
    layout->addWidget(toolbar);
    layout->addWidget(m_frame, 1);
    layout->addWidget(m_inf);
    resize(720, 420);

    m_rows = new RowList(list, *m_frame, m_menu);
    // The panel and the commands follow the selected download.
    connect(&list, &ActiveList::selectionChanged, this, &ActiveWindow::showPanel);
    connect(&list, &ActiveList::progressed, this, &ActiveWindow::showPanel);
    connect(&list, &ActiveList::changed, this, [this](int index) {
        if (index == m_list.seleccionado())
            showPanel();
    });
    connect(&list, &ActiveList::propertiesRequested, this, &ActiveWindow::showDetails);
    connect(&list, &ActiveList::shutdownRequested, this,
            [this] { m_apagar->setChecked(m_list.apagar()); });
    new LinkDropTarget(this,
                       [this](const QString &address) { m_list.AgregarArrastrando(address); });
    showPanel();
}

void ActiveWindow::buildCommands()
{
    ActiveList &list = m_list;
    m_continuar = makeCommand(this, "continuar", QStringLiteral("Co&ntinuar"),
                              QStringLiteral("Reconectar"), QStringLiteral("reconectar"));
    m_pausar = makeCommand(this, "pausar", QStringLiteral("&Pausar"),
                           QStringLiteral("Pausar descarga"), QStringLiteral("pausar"));
    m_cancelar = makeCommand(this, "cancelar", QStringLiteral("&Cancelar"),
                             QStringLiteral("Cancelar descarga"), QStringLiteral("detener"));
    m_ejecutar = makeCommand(this, "ejecutar", QStringLiteral("&Ejecutar"),
                             QStringLiteral("Ejecutar archivo"), QStringLiteral("open"));
    m_antivirus = makeCommand(this, "antivirus", QStringLiteral("&Antivirus"),
                              QStringLiteral("Ejecutar antivirus"), QStringLiteral("antivirus"));
    m_propiedades =
        makeCommand(this, "propiedades", QStringLiteral("&Propiedades"),
                    QStringLiteral("Información de la descarga"), QStringLiteral("propiedades"));
    m_delend =
        makeCommand(this, "delend", QStringLiteral("&Borrar los archivos descargados"),
                    QStringLiteral("Borrar los archivos descargados"), QStringLiteral("delend"));
    m_apagar = makeCommand(this, "apagar", QStringLiteral("A&pagar equipo al finalizar"),
                           QStringLiteral("Apagar equipo al finalizar descargas"),
                           QStringLiteral("apagar"));
    m_apagar->setCheckable(true);
    m_apagar->setChecked(list.apagar());

    connect(m_continuar, &QAction::triggered, &list, &ActiveList::CallContinue);
    connect(m_pausar, &QAction::triggered, &list, &ActiveList::CallPause);
    connect(m_cancelar, &QAction::triggered, &list, &ActiveList::CallCancel);
    connect(m_ejecutar, &QAction::triggered, &list, &ActiveList::CallExe);
    connect(m_antivirus, &QAction::triggered, &list, &ActiveList::CallAntiv);
    connect(m_propiedades, &QAction::triggered, &list, &ActiveList::CallProp);
    connect(m_delend, &QAction::triggered, &list, &ActiveList::delend);
    connect(m_apagar, &QAction::toggled, &list, &ActiveList::setApagar);

    m_menu->addActions({m_continuar, m_pausar, m_cancelar, m_ejecutar, m_antivirus, m_propiedades});
}

void ActiveWindow::showDetails(int index)
{
    m_detail.describe(activeSource(m_list, index));
}

void ActiveWindow::showPanel()
{
    m_inf->showDetails(m_list.details());
    updateCommands();
}

void ActiveWindow::updateCommands()
{
    const ActiveCommands enabled = m_list.enabledCommands();
    m_cancelar->setEnabled(enabled.detener);
    m_pausar->setEnabled(enabled.pausar);
    m_continuar->setEnabled(enabled.continuar);
    m_ejecutar->setEnabled(enabled.open);
    m_antivirus->setEnabled(enabled.antivirus);
    m_propiedades->setEnabled(enabled.propiedades);
}
