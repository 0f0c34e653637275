#include "systemtray.h"

#include <QApplication>
#include <QMenu>
#include <QSystemTrayIcon>

SystemTray::SystemTray(QWidget &mainWindow, QMenu *recent, QAction *apagar, QAction *help,
                       QAction *about, QAction *quit)
    : QObject(&mainWindow), m_main(mainWindow), m_systr(new QMenu)
{
    m_systr->setObjectName(QStringLiteral("systr"));
    QAction *mostrar = m_systr->addAction(QStringLiteral("&Mostrar"));
    mostrar->setObjectName(QStringLiteral("mostrar"));
    connect(mostrar, &QAction::triggered, this, &SystemTray::showMainWindow);
    m_systr->addSeparator();
    // Its own submenu over the same items: the main menu keeps its caption and key.
    QMenu *lasdesc = m_systr->addMenu(QStringLiteral("&Ultimos archivos descargados"));
    lasdesc->setObjectName(QStringLiteral("lasdesc"));
    lasdesc->addActions(recent->actions());
    const auto followRecent = [lasdesc, recent] {
        lasdesc->menuAction()->setEnabled(recent->menuAction()->isEnabled());
    };
    followRecent();
    connect(recent->menuAction(), &QAction::enabledChanged, this, followRecent);
    m_systr->addSeparator();
    QAction *ayuda = m_systr->addAction(QStringLiteral("&Ayuda"));
    ayuda->setObjectName(QStringLiteral("ayuda"));
    connect(ayuda, &QAction::triggered, help, &QAction::trigger);
    m_systr->addAction(about);
    m_systr->addSeparator();
    // Its own caption, the same switch as the active window's "apagar" button.
    QAction *shutdown = m_systr->addAction(QStringLiteral("A&pagar equipo al finalizar"));
    shutdown->setObjectName(QStringLiteral("shutdown"));
    shutdown->setCheckable(true);
    shutdown->setChecked(apagar->isChecked());
    connect(shutdown, &QAction::toggled, apagar, &QAction::setChecked);
    connect(apagar, &QAction::toggled, shutdown, &QAction::setChecked);
    m_systr->addAction(quit);
}

SystemTray::~SystemTray()
{
    delete m_systr;
}

void SystemTray::hideMainWindow()
{
    if (!QSystemTrayIcon::isSystemTrayAvailable()) {
        m_main.showMinimized();
        return;
    }
    if (!m_icon) {
        m_icon = new QSystemTrayIcon(QApplication::windowIcon(), this);
        m_icon->setToolTip(QStringLiteral("Corvane"));
        m_icon->setContextMenu(m_systr);
        connect(m_icon, &QSystemTrayIcon::activated, this,
                [this](QSystemTrayIcon::ActivationReason reason) {
                    if (reason == QSystemTrayIcon::Trigger ||
                        reason == QSystemTrayIcon::DoubleClick)
                        showMainWindow();
                });
    }
    m_icon->show();
    m_main.hide();
}

void SystemTray::showMainWindow()
{
    if (m_icon)
        m_icon->hide();
    m_main.showNormal();
    m_main.raise();
    m_main.activateWindow();
}

void SystemTray::showMessage(const QString &text)
{
    if (m_icon && m_icon->isVisible())
        m_icon->showMessage(QStringLiteral("Corvane"), text);
}
