#pragma once

#include "browserlink.h"
#include "programfolder.h"

#include <QLockFile>
#include <QObject>
#include <QStringList>

class QLocalServer;

// One running program per program folder: two would overwrite each other's list files. The
// lock file "corvane.lock" in the folder is held while the program runs; the lock of a program
// that was killed is taken over.
class InstanceLock
{
public:
    explicit InstanceLock(const ProgramFolder &folder);
    // False when another running program holds it.
    bool tryLock();
    // Whether a running program holds the lock of `folder`, without taking it.
    static bool isHeld(const ProgramFolder &folder);

private:
    QLockFile m_file;
};

// How a later start hands its addresses to the program that already runs on the same folder:
// a local socket named after the folder, in the user's runtime folder. A message of addresses
// ("CORVANE 1") comes from the command line; one of links ("CORVANE 2", one JSON object a line)
// from the browser extension's host, and carries what the addresses alone cannot.
class InstanceChannel final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(InstanceChannel)

public:
    enum class Delivery
    {
        Taken,
        NoProgram, // none listens on the folder's channel
        NoAnswer,  // one listens but did not take the message
        Outdated   // an older program, which reads addresses only
    };

    explicit InstanceChannel(const ProgramFolder &folder, QObject *parent = nullptr);

    // Starts listening; false when the channel could not be opened (then nothing is received).
    bool listen();
    // Sends `urls` to the program listening for `folder`; true once it has taken them.
    static bool handOver(const ProgramFolder &folder, const QStringList &urls);
    static Delivery handOver(const ProgramFolder &folder, const QList<BrowserLink> &links);
    static QString nameFor(const ProgramFolder &folder);

    // The addresses of one message: the lines after its first, a "zelq:" prefix dropped. Empty
    // for anything that is not such a message.
    static QStringList addressesOf(const QByteArray &message);
    static QByteArray messageOf(const QStringList &urls);
    // The links of one message; a line that is not a valid link is left out.
    static QList<BrowserLink> linksOf(const QByteArray &message);
    static QByteArray messageOf(const QList<BrowserLink> &links);

Q_SIGNALS:
    void received(const QStringList &urls);
    void linksReceived(const QList<BrowserLink> &links);

private:
    void accept();
    static Delivery send(const ProgramFolder &folder, const QByteArray &message,
                         const QByteArray &taken);

    QString m_name;
    QLocalServer *m_server;
};

// A command-line address may come from a "zelq:" link opened by another program.
QString withoutZelq(const QString &address);
