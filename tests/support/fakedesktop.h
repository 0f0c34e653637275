#pragma once

#include "desktop.h"

#include <QStringList>
#include <deque>
#include <functional>

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

    // The calls of one kind, without the kind.
    QStringList callsOf(const QString &kind) const
    {
        QStringList found;
        for (const QString &call : calls) {
            if (call.startsWith(kind + QLatin1Char('|')))
                found.append(call.mid(kind.size() + 1));
        }
        return found;
    }

    void messageBox(const QString &text, Icon icon, const QString &title) override
    {
        static const QStringList icons{"Critical", "Question", "Exclamation", "Information"};
        note({"messageBox", icons.at(int(icon)), text}, title);
    }
    bool askYesNo(const QString &text) override
    {
        note({"askYesNo", text});
        if (whileAsking)
            whileAsking();
        return take(yesNoAnswers, false);
    }
    std::optional<QString> inputBox(const QString &prompt, const QString &initial,
                                    const QString &title) override
    {
        note({"inputBox", prompt, initial}, title);
        // Not through take(): GCC's -O2 sees an optional QString moved out of a deque as unset.
        const bool answered = !inputAnswers.empty() && inputAnswers.front();
        const QString text = answered ? *inputAnswers.front() : QString();
        if (!inputAnswers.empty())
            inputAnswers.pop_front();
        return answered ? std::optional(text) : std::nullopt;
    }
    QString openFileDialog(const QString &initial, const QString &filter) override
    {
        note({"openFileDialog", initial, filter});
        return take(fileAnswers, QString());
    }
    QString saveFileDialog(const QString &initial, const QString &filter) override
    {
        note({"saveFileDialog", initial, filter});
        return take(fileAnswers, QString());
    }
    QString chooseFolder(const QString &initial) override
    {
        note({"chooseFolder", initial});
        return take(fileAnswers, QString());
    }
    FtpCredentials askFtpLogin(const QString &caption, const FtpCredentials &initial) override
    {
        note({"askFtpLogin", caption, initial.usernm, initial.passw});
        if (whileAsking)
            whileAsking();
        return take(loginAnswers, initial);
    }
    void playSound(const QString &path) override { note({"playSound", path}); }
    void showMessageWindow(const QString &text, const QString &imagePath) override
    {
        note({"showMessageWindow", text, imagePath});
    }
    void raiseTrayIndicator(const QString &text) override { note({"raiseTrayIndicator", text}); }
    void openFile(const QString &path) override { note({"openFile", path}); }
    void openUrl(const QString &url) override { note({"openUrl", url}); }
    void startProgram(const QString &commandLine) override { note({"startProgram", commandLine}); }
    void powerOff() override { note({"powerOff"}); }

private:
    // A title is written only when there is one.
    void note(QStringList parts, const QString &title = {})
    {
        if (!title.isEmpty())
            parts.append(title);
        calls.append(parts.join(QLatin1Char('|')));
    }
    template <typename T> static T take(std::deque<T> &queue, T none)
    {
        if (queue.empty())
            return none;
        T next = std::move(queue.front());
        queue.pop_front();
        return next;
    }
};
