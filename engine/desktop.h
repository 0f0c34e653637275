#pragma once

#include "ftplogin.h"

#include <QString>
#include <QStringList>
#include <optional>

// Everything that reaches the person or the operating system. The program uses a Qt
// implementation, the headless mode one that answers for the person, the tests a scripted fake.
class Desktop
{
public:
    enum class Icon
    {
        Critical,
        Question,
        Exclamation,
        Information
    };

    virtual ~Desktop() = default;

    virtual void messageBox(const QString &text, Icon icon, const QString &title = {}) = 0;
    virtual bool askYesNo(const QString &text) = 0;
    // nullopt when the person cancels. An empty title shows the program's name.
    virtual std::optional<QString> inputBox(const QString &prompt, const QString &initial,
                                            const QString &title = {}) = 0;
    // The chosen path, or an empty text when cancelled.
    virtual QString openFileDialog(const QString &initial, const QString &filter) = 0;
    virtual QString saveFileDialog(const QString &initial, const QString &filter) = 0;
    virtual QString chooseFolder(const QString &initial) = 0;
    // The FTP login dialog, shown modally under `caption`; returns what the person left in it.
    virtual FtpCredentials askFtpLogin(const QString &caption, const FtpCredentials &initial) = 0;
    virtual void playSound(const QString &path) = 0;
    // A message window with a picture; `imagePath` is empty when there is no picture to show.
    virtual void showMessageWindow(const QString &text, const QString &imagePath) = 0;
    virtual void raiseTrayIndicator(const QString &text) = 0;
    virtual void openFile(const QString &path) = 0;
    // An address for the program the system uses for it: a web browser, the mail program.
    virtual void openUrl(const QString &url) = 0;
    virtual void startProgram(const QString &commandLine) = 0;
    virtual void powerOff() = 0;
};
