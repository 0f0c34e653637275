// "activas.json" and "inactivas.json", the extras kept beside the list files, read, written and
// read again.
#include "downloadextras.h"
#include "failure.h"
#include "fuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString path = fileWith(QStringLiteral("activas.json"), inputBytes(data, size));
    ExtrasByPath read;
    try {
        read = readExtras(path);
    } catch (const Failure &) {
        return 0;
    }
    writeExtras(path, read);
    require(readExtras(path) == read, "the extras written read the same");
    return 0;
}
