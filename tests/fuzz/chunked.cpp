// The chunked decoder, fed the same bytes whole and in pieces of changing sizes.
#include "chunkeddecoder.h"
#include "fuzzing.h"

namespace {

struct Decoded
{
    QByteArray payload;
    bool finished = false;
    bool failed = false;
};

// Pieces of 1 to `longest` bytes, each as long as its first byte says.
Decoded decode(const QByteArray &framed, int longest)
{
    ChunkedDecoder decoder;
    Decoded decoded;
    for (qsizetype at = 0; at < framed.size();) {
        const qsizetype length = longest ? 1 + uchar(framed[at]) % longest : framed.size();
        QByteArrayView input = QByteArrayView(framed).sliced(at, qMin(length, framed.size() - at));
        at += input.size();
        while (!input.isEmpty())
            decoded.payload += decoder.next(input).toByteArray();
    }
    decoded.finished = decoder.finished();
    decoded.failed = decoder.failed();
    return decoded;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray framed = inputBytes(data, size);
    const Decoded whole = decode(framed, 0);
    require(whole.payload.size() <= framed.size(), "no more payload than bytes received");
    require(!(whole.finished && whole.failed), "finished or failed, not both");
    for (const int longest : {1, 7, 300}) {
        const Decoded pieces = decode(framed, longest);
        require(pieces.payload == whole.payload, "the same payload however the bytes arrive");
        require(pieces.finished == whole.finished && pieces.failed == whole.failed,
                "the same end however the bytes arrive");
    }
    // What came out, framed again as one chunk, comes out unchanged.
    const QByteArray again =
        QByteArray::number(whole.payload.size(), 16) + "\r\n" + whole.payload + "\r\n0\r\n\r\n";
    const Decoded round = decode(again, 0);
    require(round.finished && round.payload == whole.payload, "a payload framed again decodes");
    return 0;
}
