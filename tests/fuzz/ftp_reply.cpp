// A chunk of the FTP control connection: its last line, the reply code, a SIZE answer, the
// address of a 227 answer.
#include "failure.h"
#include "ftpreply.h"
#include "fuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray chunk = inputBytes(data, size);
    const QByteArray line = Ftp::lastLine(chunk);
    require(line.isEmpty() || (line.endsWith('\r') && chunk.contains(line)),
            "the last line is one of the chunk's lines, with its carriage return");
    const int code = Ftp::replyCode(line);
    require(code >= -99 && code <= 999, "a reply code has at most three characters");
    Ftp::sizeOf(line);
    try {
        Ftp::passiveEndpoint(line);
    } catch (const Failure &) {
    }
    return 0;
}
