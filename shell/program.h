#pragma once

#include "browserlink.h"
#include "core.h"
#include "desktop.h"
#include "quicklist.h"
#include "recentdownloads.h"

#include <QObject>
#include <QPointer>
#include <memory>

class AboutWindow;
class ClipboardWatch;
class QAction;
class CfgWindow;
class DetailWindow;
class FileListWindow;
class LinkGrabberWindow;
class MainWindow;
class SplashWindow;
class StopSignals;
class SystemTray;

// Corvane with its windows: the core (settings, history, lists) and every window over it, started
// behind the splash; it wires the main window's commands, and on close saves the lists, the view
// switches and the quick-add history and ends.
class Program final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Program)

public:
    // `urls` are added once the main window is up, as the quick-add bar adds them.
    Program(const ProgramFolder &folder, const QStringList &urls, Desktop &desktop,
            QObject *parent = nullptr);
    ~Program() override;

    // Shows the splash; its timer brings up the main window.
    void start();
    // Adds one address as the quick-add bar does, without recording it in the bar's list; false
    // when it was refused.
    bool añadir(const QString &url);
    // Addresses handed over by a later start: added, and the main window comes to the front.
    void handOver(const QStringList &urls);
    // Links handed over by the browser extension: downloads are added, pages open in the link
    // grabber; the main window comes to the front.
    void fromBrowser(const QList<BrowserLink> &links);

    MainWindow *mainWindow() const { return m_main.get(); }

Q_SIGNALS:
    // The main window exists: dialogs can have it as their parent.
    void mainWindowReady(MainWindow *window);
    // Shutdown has come to the folder chooser's turn to go.
    void unloadFolder();

private:
    void build();
    bool restoreViews();
    bool restoreQuickList();
    void wireMenus();
    void wireSpeedLimit(QAction &limit);
    void wireEngine();
    void wireBrowser();
    void grabPage(const QString &url);
    void offerCopied(const QString &url);
    void quickAdd(const QString &text);
    void showRecent();
    void showListado();
    void showFileList();
    void shutdown();
    void startupError(const QString &description);

    ProgramFolder m_folder;
    QStringList m_urls;
    QList<BrowserLink> m_browserLinks;
    Desktop &m_desktop;
    Core m_core;
    QuickList m_quickList;
    RecentDownloads m_recent;

    std::unique_ptr<MainWindow> m_main;
    QPointer<SplashWindow> m_splash;
    CfgWindow *m_cfg = nullptr;
    LinkGrabberWindow *m_listado = nullptr;
    FileListWindow *m_oldsupport = nullptr;
    AboutWindow *m_about = nullptr;
    SystemTray *m_tray = nullptr;
    DetailWindow *m_detallado = nullptr;
    ClipboardWatch *m_clipboard = nullptr;
    QAction *m_apagar = nullptr;
    StopSignals *m_stopSignals = nullptr;
    bool m_quickListRead = false;
    bool m_ended = false;
};
