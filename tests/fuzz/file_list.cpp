// The file-list import: a base address and names, read from a list file.
#include "fuzzing.h"
#include "listfile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray content = inputBytes(data, size);
    const ListFile whole = readListFile(content);
    require(!whole.failure || whole.names.isEmpty(), "a fault comes before the first name");
    // A file cut short lists the same names up to the cut; only the last may be cut itself.
    const ListFile cut = readListFile(content.left(content.size() / 2));
    require(cut.names.size() <= whole.names.size(), "no more names in less of the file");
    for (qsizetype i = 0; i + 1 < cut.names.size(); ++i)
        require(cut.names[i] == whole.names[i], "the names before the cut stay the same");
    return 0;
}
