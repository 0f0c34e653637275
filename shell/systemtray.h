#pragma once

#include <QObject>

class QAction;
class QMenu;
class QSystemTrayIcon;
class QWidget;

// The program's place in the system tray while its main window is hidden there, with the
// pop-up menu `systr`. Without a tray (a bare X server) the main window is minimised instead,
// so the person never loses the program.
class SystemTray final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SystemTray)

public:
    // `recent` is the recent-downloads menu, `apagar` the shut-down-when-done switch; `help`,
    // `about` and `quit` are the main window's own commands.
    SystemTray(QWidget &mainWindow, QMenu *recent, QAction *apagar, QAction *help, QAction *about,
               QAction *quit);
    ~SystemTray() override;

    QMenu *menu() const { return m_systr; }
    // "systray" and `hidesys`.
    void hideMainWindow();
    // `mostrar`.
    void showMainWindow();
    // A passing message by the tray icon, while the main window is hidden there.
    void showMessage(const QString &text);

private:
    QWidget &m_main;
    QMenu *m_systr;
    QSystemTrayIcon *m_icon = nullptr;
};
