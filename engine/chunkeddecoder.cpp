#include "chunkeddecoder.h"

#include <algorithm>

namespace {

int hexValue(char byte)
{
    if (byte >= '0' && byte <= '9')
        return byte - '0';
    if (byte >= 'a' && byte <= 'f')
        return byte - 'a' + 10;
    if (byte >= 'A' && byte <= 'F')
        return byte - 'A' + 10;
    return -1;
}

} // namespace

QByteArrayView ChunkedDecoder::next(QByteArrayView &input)
{
    while (!input.isEmpty()) {
        if (m_state == State::Done || m_state == State::Broken) {
            input = {};
            break;
        }
        if (m_state == State::Data) {
            const qsizetype length = qsizetype(std::min<qint64>(m_left, input.size()));
            const QByteArrayView piece = input.first(length);
            input = input.sliced(length);
            m_left -= length;
            if (m_left == 0)
                m_state = State::DataEnd;
            return piece;
        }
        takeFraming(input.front());
        input = input.sliced(1);
    }
    return {};
}

// One byte of a size line or of the line end after a chunk. A bare LF is taken for CR LF.
void ChunkedDecoder::takeFraming(char byte)
{
    switch (m_state) {
    case State::Size:
        if (const int value = hexValue(byte); value >= 0)
            sizeDigit(value);
        else if (m_digits > 0 && (byte == ';' || byte == ' ' || byte == '\t'))
            m_state = State::Extension;
        else if (byte == '\r')
            m_state = State::SizeLineFeed;
        else if (byte == '\n')
            sizeLineEnded();
        else
            m_state = State::Broken;
        break;
    case State::Extension:
        // Chunk extensions and blanks after the size mean nothing to a download.
        if (byte == '\n')
            sizeLineEnded();
        break;
    case State::SizeLineFeed:
        if (byte == '\n')
            sizeLineEnded();
        else
            m_state = State::Broken;
        break;
    case State::DataEnd:
        m_state = byte == '\r' ? State::DataLineFeed : byte == '\n' ? State::Size : State::Broken;
        break;
    case State::DataLineFeed:
        m_state = byte == '\n' ? State::Size : State::Broken;
        break;
    case State::Data:
    case State::Done:
    case State::Broken:
        break;
    }
}

void ChunkedDecoder::sizeDigit(int value)
{
    // Servers send chunks of kilobytes: a size line of more than 16 digits, or a chunk larger
    // than a terabyte, is no size at all, and what follows it is not the file.
    constexpr int MaxDigits = 16;
    constexpr qint64 MaxChunk = qint64(1) << 40;
    m_left = m_left * 16 + value;
    if (++m_digits > MaxDigits || m_left > MaxChunk)
        m_state = State::Broken;
}

void ChunkedDecoder::sizeLineEnded()
{
    if (m_digits == 0)
        m_state = State::Broken;
    else
        m_state = m_left == 0 ? State::Done : State::Data;
    m_digits = 0;
}
