#pragma once

#include <QByteArrayView>

// Takes the framing off a reply sent with "Transfer-Encoding: chunked": a hexadecimal size
// line, that many bytes and a line end, again and again until a chunk of size 0. The bytes
// may be split anywhere across reads; the payload comes back as views into them, not copied.
class ChunkedDecoder
{
public:
    // The next piece of payload at the front of `input`, after any framing before it; `input`
    // keeps what follows the piece. An empty piece means `input` held only framing.
    QByteArrayView next(QByteArrayView &input);

    // The chunk of size 0 has arrived; whatever follows it (trailers) is ignored.
    bool finished() const { return m_state == State::Done; }
    // The framing is broken: a size that is not hexadecimal or too large, a missing line end.
    bool failed() const { return m_state == State::Broken; }

private:
    enum class State
    {
        Size,
        Extension,
        SizeLineFeed,
        Data,
        DataEnd,
        DataLineFeed,
        Done,
        Broken
    };

    void takeFraming(char byte);
    void sizeDigit(int value);
    void sizeLineEnded();

    State m_state = State::Size;
    qint64 m_left = 0; // the size being read, then the bytes of the chunk still to come
    int m_digits = 0;  // of the size line being read
};
