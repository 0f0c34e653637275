// "view.win", the windows and bars shown, as read at start and written on closing.
#include "fuzzing.h"
#include "viewswitches.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString path = fileWith(QStringLiteral("view.win"), inputBytes(data, size));
    const ViewSwitches read = ViewSwitches::read(path);
    read.write(path);
    const ViewSwitches again = ViewSwitches::read(path);
    for (int which = 0; which < ViewSwitches::Count; ++which) {
        const auto switchOf = ViewSwitches::Switch(which);
        require(again.on(switchOf) == read.on(switchOf), "the switches written read the same");
    }
    return 0;
}
