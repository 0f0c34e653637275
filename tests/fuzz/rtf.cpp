// The history file: RTF from any writer read as the log opens it, and the log written back.
#include "fuzzing.h"
#include "rtfcodec.h"

namespace {

// The runs of a document with every line break as one LF, the form the log compares.
QList<RtfRun> plainRuns(const RtfDocument &document)
{
    QList<RtfRun> runs;
    for (RtfRun run : document.runs) {
        run.text.replace(QLatin1String("\r\n"), QLatin1String("\n")).replace(u'\r', u'\n');
        if (!runs.isEmpty() && runs.last().colour == run.colour)
            runs.last().text += run.text;
        else if (!run.text.isEmpty())
            runs.append(run);
    }
    return runs;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::optional<RtfDocument> read = Rtf::read(inputBytes(data, size));
    if (!read)
        return 0;
    // What was read, written and read again keeps its text and colours.
    const std::optional<RtfDocument> again = Rtf::read(Rtf::write(*read));
    require(again.has_value(), "what the log writes is RTF");
    require(plainRuns(*again) == plainRuns(*read), "written and read again, the text stays");
    return 0;
}
