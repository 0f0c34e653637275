#pragma once

#include <QFile>

// The local file of a download, addressed by 1-based positions as the slot record keeps them.
class SlotFile
{
public:
    // Opens `path` for reading and writing, creating it; throws Failure.
    void open(const QString &path);
    void close();
    bool isOpen() const { return m_file.isOpen(); }

    qint64 length() const { return m_file.size(); }
    // The position of the next byte written, 1-based.
    qint64 position() const { return m_file.pos() + 1; }
    void seek(qint64 position);
    // Throws Failure when the bytes could not all be written.
    void write(QByteArrayView data);
    // Empties the file: the bytes on disk belong to another version of it.
    void truncate();
    // Reserves disk space for a file of `size` bytes without changing its length, which stays
    // the count of bytes received (resuming goes by it).
    void reserve(qint64 size);

private:
    QFile m_file;
};

// `path`, or when a file is there already the first free of "name (1).ext", "name (2).ext", ...
QString unusedPath(const QString &path);
