// "corvane.ini" as the program reads it at start, and the file it writes back.
#include "fakedesktop.h"
#include "fuzzing.h"
#include "recordinghistory.h"
#include "settingsmodel.h"

namespace {

// Loads the file of the scratch folder and writes it again; false when loading failed.
bool loadAndSave(Settings *loaded = nullptr)
{
    FakeDesktop desktop;
    RecordingHistory history;
    SettingsModel model(ProgramFolder(scratchFolder().path()), desktop, history);
    const bool read = model.load();
    require(model.save(), "the settings are written");
    if (loaded)
        *loaded = model.settings();
    return read;
}

// A text box read as a field loses a comma, a quote or blanks around it, by design.
bool survives(const Settings &s)
{
    for (const QString &text : {s.segs, s.veces, s.maxdesc, s.wait}) {
        if (text.contains(u',') || text.contains(u'"') || text.trimmed() != text)
            return false;
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString path = fileWith(QStringLiteral("corvane.ini"), inputBytes(data, size));
    Settings first;
    const bool read = loadAndSave(&first);
    if (!survives(first))
        return 0;
    // Read and written again, the file stays as the program wrote it; a file that read without
    // a fault still does. (One that did not may keep the text that failed: the text boxes are
    // saved as they are.)
    const QByteArray written = readFile(path);
    require(loadAndSave() || !read, "the program reads the settings it wrote");
    require(readFile(path) == written, "settings read and written again stay the same");
    return 0;
}
