// "quick.lst", the addresses the quick-add box offers, as read at start and written on closing.
#include "fuzzing.h"
#include "quicklist.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString path = fileWith(QStringLiteral("quick.lst"), inputBytes(data, size));
    QuickList read;
    read.load(path);
    read.save(path);
    QuickList again;
    again.load(path);
    require(again.items() == read.items(), "the addresses written read the same");
    return 0;
}
