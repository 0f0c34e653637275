#pragma once

#include "browserlink.h"
#include "programfolder.h"

#include <QJsonObject>

// `corvane --native-host`: what the browser extension talks to. The browser starts it and speaks
// native messaging on its standard input and output: each message, both ways, is a 4-byte length
// in the machine's byte order followed by that many bytes of UTF-8 JSON. The host answers every
// message, and hands each link to the program running on its folder, starting one when none
// runs. It needs no screen of its own.
class NativeHost
{
public:
    // The browsers send at most this much to the extension; the host takes no more either.
    static constexpr qint64 MaxMessage = 1024 * 1024;

    // `program` is the executable to start when no program runs on `folder`.
    NativeHost(const ProgramFolder &folder, const QString &program);

    // Answers the messages of `in` on `out` until the browser closes `in`; 0 when it closed it
    // between two messages.
    int serve(int in, int out);
    // {"ok": true, ...} or {"ok": false, "error": why, in Spanish}.
    QJsonObject answer(const QByteArray &message);

private:
    QJsonObject extensions() const;
    // Empty once the running program has the link, else why not.
    QString deliver(const BrowserLink &link);
    QString startProgram(const BrowserLink &link);

    ProgramFolder m_folder;
    QString m_program;
};
