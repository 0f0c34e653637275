#pragma once

#include "desktop.h"
#include "historysink.h"

#include <QTextStream>

// The desktop without a screen: every text goes to stderr as one line, questions are answered
// No, dialogs keep what they were given, and the answer is said on stderr too.
class ConsoleDesktop final : public Desktop
{
public:
    ConsoleDesktop();

    void say(const QString &text);

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
    QTextStream m_err;
    QString m_lastLine;
};

// History lines as plain lines on stderr.
class ConsoleHistory final : public HistorySink
{
public:
    explicit ConsoleHistory(ConsoleDesktop &console) : m_console(console) {}
    void append(const QString &text, quint32 colour) override;

private:
    ConsoleDesktop &m_console;
};
