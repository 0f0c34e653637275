#include "slotfile.h"

#include "failure.h"

#include <QDir>
#include <QFileInfo>
#include <fcntl.h>

void SlotFile::open(const QString &path)
{
    m_file.close();
    m_file.setFileName(path);
    // The download folder is made on first use, like the default one under the program folder.
    QDir().mkpath(QFileInfo(path).absolutePath());
    // Unbuffered: every chunk goes straight to the file, so nothing is pending when it closes.
    if (!m_file.open(QIODevice::ReadWrite | QIODevice::Unbuffered))
        throw Failure(m_file.errorString());
}

void SlotFile::close()
{
    m_file.close();
}

void SlotFile::seek(qint64 position)
{
    if (!m_file.seek(position - 1))
        throw Failure(m_file.errorString());
}

void SlotFile::write(QByteArrayView data)
{
    // Bytes of a connection whose file was closed under it (its control connection failed)
    // have nowhere to go.
    if (!m_file.isOpen())
        throw Failure(QStringLiteral("El archivo no está abierto"));
    if (m_file.write(data.data(), data.size()) != data.size())
        throw Failure(m_file.errorString());
}

void SlotFile::truncate()
{
    if (!m_file.resize(0))
        throw Failure(m_file.errorString());
}

void SlotFile::reserve(qint64 size)
{
    if (m_file.isOpen() && size > m_file.size()) {
        // Only a hint for the file system; a refusal changes nothing.
        [[maybe_unused]] const int result =
            ::fallocate(m_file.handle(), FALLOC_FL_KEEP_SIZE, 0, size);
    }
}

QString unusedPath(const QString &path)
{
    const QFileInfo wanted(path);
    const QString stem = wanted.completeBaseName();
    const QString suffix = wanted.suffix().isEmpty() ? QString() : "." + wanted.suffix();
    QString candidate = path;
    for (int n = 1; QFileInfo::exists(candidate); ++n)
        candidate = wanted.dir().filePath(stem + QStringLiteral(" (") + QString::number(n) +
                                          QLatin1Char(')') + suffix);
    return candidate;
}
