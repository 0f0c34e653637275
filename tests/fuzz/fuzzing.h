#pragma once

// What the fuzz targets share: the input as Qt bytes, files in a folder of this process, and
// checks that stop the run like a crash, so that libFuzzer keeps the input that broke them.
#include "failure.h"
#include "files.h"

#include <QByteArray>
#include <QTemporaryDir>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

inline QByteArray inputBytes(const uint8_t *data, size_t size)
{
    return QByteArray(reinterpret_cast<const char *>(data), qsizetype(size));
}

inline void require(bool holds, const char *what)
{
    if (holds)
        return;
    std::fprintf(stderr, "Wrong result: %s\n", what);
    std::abort();
}

// Runs `parse`, for which a Failure is one of the expected answers.
template <typename Parse> void tolerating(Parse parse)
{
    try {
        parse();
    } catch (const Failure &) {
    }
}

inline const QTemporaryDir &scratchFolder()
{
    static const QTemporaryDir folder;
    return folder;
}

// The path of `name` in this process's temporary folder, the file holding `bytes`.
inline QString fileWith(const QString &name, const QByteArray &bytes)
{
    const QString path = scratchFolder().filePath(name);
    require(writeFile(path, bytes), "the temporary file is written");
    return path;
}
