#include "viewswitches.h"

#include "failure.h"

#include <QFile>
#include <QSaveFile>

ViewSwitches ViewSwitches::firstStart()
{
    ViewSwitches switches;
    for (Switch which : {viewactivas, viewinactivas, general, viequickadd})
        switches.set(which, true);
    return switches;
}

ViewSwitches ViewSwitches::read(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw Failure(file.errorString());
    const QByteArray bytes = file.read(2 * Count);
    if (file.error() != QFileDevice::NoError)
        throw Failure(file.errorString());
    ViewSwitches switches;
    // Any value other than 0 counts as true, as a boolean read from the file does.
    for (int i = 0; i + 1 < bytes.size(); i += 2)
        switches.m_on[i / 2] = bytes[i] != 0 || bytes[i + 1] != 0;
    return switches;
}

void ViewSwitches::write(const QString &path) const
{
    QByteArray bytes;
    for (bool value : m_on)
        bytes += value ? QByteArray("\xff\xff", 2) : QByteArray(2, '\0');
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        throw Failure(file.errorString());
}
