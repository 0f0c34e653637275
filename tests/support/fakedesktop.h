#pragma once

#include "desktop.h"

#include <QStringList>
#include <deque>

// A desktop that records every call as one text ("messageBox|Critical|text") and answers
// questions from queues; an empty queue answers No / cancel.
class FakeDesktop : public Desktop
{
public:
    QStringList calls;
    std::deque<bool> yesNoAnswers;
    std::deque<std::optional<QString>> inputAnswers;
    std::deque<QString> fileAnswers;
    // What the person leaves in the FTP login dialog; none queued keeps what it showed.
    std::deque<FtpCredentials> loginAnswers;
    // Runs inside a modal question, as the person thinks; events keep arriving meanwhile.
    std::function<void()> whileAsking;

    QStringList callsOf(const QString &kind) const;

    void messageBox(const QString &text, Icon icon, const QString &title) override;
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
    QString nextFile();
};
