#pragma once

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

private:
    QLockFile m_file;
};

// How a later start hands its addresses to the program that already runs on the same folder:
// a local socket named after the folder, in the user's runtime folder.
class InstanceChannel final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(InstanceChannel)

public:
    explicit InstanceChannel(const ProgramFolder &folder, QObject *parent = nullptr);

    // Starts listening; false when the channel could not be opened (then nothing is received).
    bool listen();
    // Sends `urls` to the program listening for `folder`; true once it has taken them.
    static bool handOver(const ProgramFolder &folder, const QStringList &urls);
    static QString nameFor(const ProgramFolder &folder);

    // The addresses of one message: the lines after its first, a "zelq:" prefix dropped. Empty
    // for anything that is not such a message.
    static QStringList addressesOf(const QByteArray &message);
    static QByteArray messageOf(const QStringList &urls);

Q_SIGNALS:
    void received(const QStringList &urls);

private:
    void accept();

    QString m_name;
    QLocalServer *m_server;
};

// A command-line address may come from a "zelq:" link opened by another program.
QString withoutZelq(const QString &address);
