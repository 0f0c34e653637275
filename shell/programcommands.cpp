// What the main window's commands do, and what the main window shows of the engine.
#include "aboutwindow.h"
#include "cfgwindow.h"
#include "filelistwindow.h"
#include "linkgrabberwindow.h"
#include "mainactions.h"
#include "mainwindow.h"
#include "program.h"
#include "stopsignals.h"
#include "systemtray.h"

#include <QAction>
#include <QClipboard>
#include <QComboBox>
#include <QGuiApplication>
#include <QLineEdit>
#include <QMdiArea>
#include <QMenu>

// The menu's check switches the limit of the settings' "Descargas" tab on and off at once.
void Program::wireSpeedLimit(QAction &limit)
{
    SettingsModel &settings = m_core.settings();
    const auto show = [&settings, &limit] {
        const QSignalBlocker blocker(limit);
        limit.setChecked(settings.extra().limitar);
        limit.setToolTip(QStringLiteral("Limitar la velocidad de todas las descargas a %1 Kb/s")
                             .arg(settings.extra().limite));
    };
    show();
    connect(&settings, &SettingsModel::changed, &limit, show);
    connect(&limit, &QAction::toggled, this, [&settings](bool on) {
        settings.setExtra(&ExtraSettings::limitar, on);
        settings.save();
    });
}

void Program::wireMenus()
{
    MainActions &actions = m_main->actions();
    const auto on = [this, &actions](const char *name, auto function) {
        connect(actions[QLatin1String(name)], &QAction::triggered, this, function);
    };
    on("newurl", [this] { m_core.quickAdd().newurl(QGuiApplication::clipboard()->text()); });
    on("loadlist", &Program::showFileList);
    on("listado", &Program::showListado);
    on("savehist", [this] { m_core.history().savehist(); });
    on("delhist", [this] { m_core.history().clear(); });
    on("detall", [this] { m_core.all().detall(); });
    on("detact", [this] { m_core.all().detact(); });
    on("detinactivas", [this] { m_core.all().detinactivas(); });
    on("pauseall", [this] { m_core.all().pauseall(); });
    on("contall", [this] { m_core.all().contall(); });
    on("salir", [this] { m_main->close(); });
    on("opciones", [this] { m_cfg->exec(); });
    wireSpeedLimit(*actions["limitar"]);
    on("cascada", [this] { m_main->mdi()->cascadeSubWindows(); });
    on("mhorz", [this] { m_main->tile(Qt::Horizontal); });
    on("mvert", [this] { m_main->tile(Qt::Vertical); });
    on("ayudab", [this] { m_desktop.openFile(m_folder.dataFile(QStringLiteral("help.html"))); });
    on("acercade", [this] { m_about->exec(); });
    on("activas", [this] { m_main->bringForward(ViewSwitches::viewactivas); });
    on("inactivas", [this] { m_main->bringForward(ViewSwitches::viewinactivas); });
    on("estadisticas", [this] { m_main->bringForward(ViewSwitches::viewestadisticas); });
    on("log", [this] { m_main->bringForward(ViewSwitches::viewhist); });
    on("explorer", [this] { m_main->bringForward(ViewSwitches::viewweb); });
    for (int i = 0; i < RecentDownloads::Size; ++i) {
        QAction *item = actions[QStringLiteral("ultdescarga%1").arg(i)];
        connect(item, &QAction::triggered, this,
                [this, item] { m_desktop.openFile(item->data().toString()); });
    }
    showRecent();

    m_tray = new SystemTray(*m_main, actions.ultimas(), m_apagar, actions["ayudab"],
                            actions["acercade"], actions["salir"]);
    on("hidesys", [this] { m_tray->hideMainWindow(); });

    connect(m_main.get(), &MainWindow::quickAddRequested, this, &Program::quickAdd);
    connect(m_main.get(), &MainWindow::closeRequested, this, &Program::shutdown);
    m_stopSignals = new StopSignals(this);
    connect(m_stopSignals, &StopSignals::received, this, &Program::shutdown);
}

void Program::wireEngine()
{
    ActiveList &active = m_core.active();
    connect(&active, &ActiveList::statusText, m_main.get(), &MainWindow::setPanelText);
    connect(&active, &ActiveList::downloadFinished, &m_recent, &RecentDownloads::add);
    connect(&m_recent, &RecentDownloads::changed, this, &Program::showRecent);
    connect(&active, &ActiveList::shutdownRequested, this, &Program::shutdown);
    const auto showQuickList = [this] {
        QComboBox *box = m_main->quickadd();
        const QString typed = box->currentText();
        box->clear();
        box->addItems(m_quickList.items());
        box->setEditText(typed);
    };
    connect(&m_quickList, &QuickList::changed, this, showQuickList);

    // The count follows both lists, whatever added, moved or removed the download; a finished
    // download stays in the active list until it is cleared, but no longer counts as active.
    InactiveList &inactive = m_core.inactive();
    const auto showCount = [this, &active, &inactive] {
        int running = 0;
        for (int i = 1; i <= active.highestIndex(); ++i)
            running += active.existe(i) && active.row(i).status != DownloadStatus::Finished;
        const int all = active.rowCount() - 1 + inactive.rowCount() - 1;
        m_main->setPanelText(StatusPanel::Descargas,
                             QString::number(running) + QLatin1Char('/') + QString::number(all));
    };
    for (DownloadList *list :
         {static_cast<DownloadList *>(&active), static_cast<DownloadList *>(&inactive)}) {
        connect(list, &DownloadList::added, this, showCount);
        connect(list, &DownloadList::changed, this, showCount);
        connect(list, &DownloadList::removed, this, showCount);
    }
    showCount();
}

// The tools are made on first use and kept.
void Program::showListado()
{
    if (!m_listado)
        m_listado =
            new LinkGrabberWindow(m_core.active(), m_core.inactive(), m_core.settings().settings(),
                                  m_desktop, m_folder, m_main.get());
    m_listado->exec();
}

void Program::showFileList()
{
    if (!m_oldsupport)
        m_oldsupport = new FileListWindow(m_core.active(), m_core.inactive(),
                                          m_core.settings().settings(), m_desktop, m_main.get());
    m_oldsupport->loadlist();
}

void Program::showRecent()
{
    const QStringList &paths = m_recent.paths();
    for (int i = 0; i < RecentDownloads::Size; ++i) {
        QAction *item = m_main->actions()[QStringLiteral("ultdescarga%1").arg(i)];
        const QString path = paths.value(i);
        // A "&" in a file name is shown, not taken as a menu key.
        item->setText(QString(path).replace(QLatin1Char('&'), QLatin1String("&&")));
        item->setData(path);
        item->setVisible(!path.isEmpty());
    }
    m_main->actions().ultimas()->menuAction()->setEnabled(!paths.isEmpty());
}
