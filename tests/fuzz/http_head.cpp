// The head of an HTTP reply, taken apart from one received chunk as the transfer does it.
#include "fuzzing.h"
#include "httpresponse.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray chunk = inputBytes(data, size);
    Http::isHead(chunk);
    const int code = Http::statusCode(chunk);
    require(code >= -99 && code <= 999, "a status code has at most three characters");
    const qsizetype body = Http::bodyStart(chunk);
    require(body >= 0 && body <= chunk.size(), "the payload starts inside the chunk");
    // Only a head with its blank line can be chunked, and its payload follows that line.
    require(!Http::isChunked(chunk) || body > 0, "a chunked head has an end");
    tolerating([&] { Http::contentLength(chunk); });
    tolerating([&] {
        const QString address = Http::location(chunk);
        require(!address.contains(u'\r') && !address.contains(QLatin1String("\n\n")),
                "a Location ends at its line end");
    });
    return 0;
}
