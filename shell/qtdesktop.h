#pragma once

#include "desktop.h"
#include "programfolder.h"

#include <QObject>
#include <QPointer>
#include <functional>

class FolderWindow;
class QSystemTrayIcon;
class QWidget;

// The desktop as Qt shows it: message boxes, dialogs, sounds, message windows, the tray.
class QtDesktop final : public QObject, public Desktop
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QtDesktop)

public:
    explicit QtDesktop(const ProgramFolder &folder, QObject *parent = nullptr);
    ~QtDesktop() override;

    // Message windows are modal while this window is on screen.
    void setMainWindow(QWidget *window) { m_mainWindow = window; }
    // The main window's `getunload`: the folder chooser refuses to close until it is true.
    void setGetunload(std::function<bool()> getunload) { m_getunload = std::move(getunload); }
    // Shutdown: the folder chooser goes (it is made on first use and kept until then).
    void unloadFolder();

    void messageBox(const QString &text, Icon icon, const QString &title = {}) override;
    bool askYesNo(const QString &text) override;
    std::optional<QString> inputBox(const QString &prompt, const QString &initial,
                                    const QString &title) override;
    QString openFileDialog(const QString &initial, const QString &filter) override;
    QString saveFileDialog(const QString &initial, const QString &filter) override;
    QString chooseFolder(const QString &initial) override;
    FtpCredentials askFtpLogin(const QString &caption, const FtpCredentials &initial) override;
    void playSound(const QString &path) override;
    void showMessageWindow(const QString &text, const QString &imagePath) override;
    void raiseTrayIndicator(const QString &text) override;
    void openFile(const QString &path) override;
    void openUrl(const QString &url) override;
    void startProgram(const QString &commandLine) override;
    void powerOff() override;

private:
    ProgramFolder m_folder;
    QWidget *m_mainWindow = nullptr;
    QSystemTrayIcon *m_tray = nullptr;
    QString m_pendingTrayText;
    std::function<bool()> m_getunload;
    QPointer<FolderWindow> m_folderWindow;
};
