// The parts of a download address: host, port, path, file name, and ".." segments applied.
#include "urls.h"

#include "fakedesktop.h"
#include "fuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString url = QString::fromUtf8(inputBytes(data, size));
    FakeDesktop desktop;
    const QString host = HostOf(url, desktop);
    // A refused address is said once, and only then.
    require(desktop.calls.size() == (host == HostError ? 1 : 0), "one message for a refusal");
    tolerating([&] { PortOf(url); });
    PathOf(url);
    require(!FileNameOf(url).isEmpty(), "a download always has a file name");
    tolerating([&] {
        const QString resolved = ResolveDots(url);
        require(ResolveDots(resolved) == resolved, "an address without \"..\" stays as it is");
    });
    return 0;
}
