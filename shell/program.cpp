#include "program.h"

#include "aboutwindow.h"
#include "activewindow.h"
#include "cfgwindow.h"
#include "detailwindow.h"
#include "failure.h"
#include "historywindow.h"
#include "homepage.h"
#include "inactivewindow.h"
#include "linkdrop.h"
#include "linkgrabberwindow.h"
#include "mainactions.h"
#include "mainwindow.h"
#include "splashwindow.h"
#include "statswindow.h"
#include "stopsignals.h"
#include "systemtray.h"
#include "viewswitches.h"
#include "webwindow.h"

#include <QApplication>
#include <QComboBox>
#include <QFileInfo>
#include <QLineEdit>

Program::Program(const ProgramFolder &folder, const QStringList &urls, Desktop &desktop,
                 QObject *parent)
    : QObject(parent), m_folder(folder), m_urls(urls), m_desktop(desktop), m_core(folder, desktop)
{}

Program::~Program() = default;

void Program::start()
{
    m_splash = new SplashWindow;
    connect(m_splash, &SplashWindow::done, this, &Program::build);
    m_splash->show();
}

void Program::build()
{
    m_main = std::make_unique<MainWindow>();
    Q_EMIT mainWindowReady(m_main.get());
    // The core reads the settings, the history and the lists; the windows then show what they
    // hold, in this order. The settings window stays, hidden, for the whole run.
    m_core.load();
    ActiveList &active = m_core.active();
    m_main->addChild(ViewSwitches::viewweb,
                     new WebWindow([this](const QString &url) { return añadir(url); },
                                   active.notifier(), m_desktop, homePage(m_folder.dataDir())));
    m_detallado = new DetailWindow(m_main.get());
    m_main->addChild(ViewSwitches::viewinactivas,
                     new InactiveWindow(m_core.inactive(), active, *m_detallado));
    auto *activas = new ActiveWindow(active, *m_detallado);
    m_apagar = activas->apagarAction();
    m_main->addChild(ViewSwitches::viewactivas, activas);
    m_cfg = new CfgWindow(m_core.settings(), m_desktop, m_main.get());
    m_main->addChild(ViewSwitches::viewhist, new HistoryWindow(m_core.history()));
    m_main->addChild(ViewSwitches::viewestadisticas, new StatsWindow(active));
    active.startTimers();

    m_about = new AboutWindow(m_main.get());
    new LinkDropTarget(m_main.get(),
                       [&active](const QString &url) { active.AgregarArrastrando(url); });
    wireMenus();
    wireEngine();
    wireBrowser();
    m_main->show();
    if (restoreViews())
        restoreQuickList();
    for (const QString &url : std::as_const(m_urls))
        añadir(url);
    fromBrowser(std::exchange(m_browserLinks, {}));
}

bool Program::restoreViews()
{
    const QString path = m_folder.file(QStringLiteral("view.win"));
    try {
        m_main->applyViewSwitches(QFileInfo::exists(path) ? ViewSwitches::read(path)
                                                          : ViewSwitches::firstStart());
        // Where the windows stood is not kept: they start side by side, none hidden by another.
        m_main->arrange();
        return true;
    } catch (const Failure &failure) {
        startupError(failure.description());
        return false;
    }
}

bool Program::restoreQuickList()
{
    const QString path = m_folder.file(QStringLiteral("quick.lst"));
    try {
        if (QFileInfo::exists(path))
            m_quickList.load(path);
        m_quickListRead = true;
        return true;
    } catch (const Failure &failure) {
        startupError(failure.description());
        return false;
    }
}

void Program::startupError(const QString &description)
{
    m_desktop.messageBox(QStringLiteral("Error al iniciar Corvane:\n") + description,
                         Desktop::Icon::Critical);
}

bool Program::añadir(const QString &url)
{
    return !m_core.quickAdd().add(url).isEmpty();
}

void Program::handOver(const QStringList &urls)
{
    // Addresses that come while the splash is up wait for the main window.
    if (!m_main) {
        m_urls += urls;
        return;
    }
    m_tray->showMainWindow();
    for (const QString &url : urls)
        añadir(url);
}

void Program::quickAdd(const QString &text)
{
    if (m_core.quickAdd().add(text).isEmpty())
        return;
    m_quickList.record(text);
    m_main->quickadd()->clearEditText();
}

void Program::shutdown()
{
    if (m_ended)
        return;
    m_ended = true;
    m_main->setClosing();
    // Downloads stop where they are; their partial files resume on the next start.
    m_core.save();
    delete m_about;
    delete m_cfg;
    delete m_detallado;
    Q_EMIT unloadFolder();
    delete m_listado;
    delete m_splash;
    // Each file is written whatever became of the other.
    const auto save = [this](const auto &write) {
        try {
            write();
        } catch (const Failure &failure) {
            m_desktop.messageBox(failure.description(), Desktop::Icon::Critical);
        }
    };
    save([this] { m_main->viewSwitches().write(m_folder.file(QStringLiteral("view.win"))); });
    // A list that was never read is left as it is, not replaced by an empty one.
    if (m_quickListRead)
        save([this] { m_quickList.save(m_folder.file(QStringLiteral("quick.lst"))); });
    QCoreApplication::exit(0);
}
