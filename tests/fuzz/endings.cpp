// "listado.lst", the link grabber's wanted endings, as read when its window opens and written
// when it adds the downloads.
#include "fuzzing.h"
#include "linkextraction.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString path = fileWith(QStringLiteral("listado.lst"), inputBytes(data, size));
    const QStringList endings = readEndings(path);
    writeEndings(path, endings);
    require(readEndings(path) == endings, "the endings written read the same");
    return 0;
}
