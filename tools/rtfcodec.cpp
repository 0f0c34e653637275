#include "rtfcodec.h"

namespace {

// Calls `write` with each piece of RTF that `text` becomes, in order.
template <typename Write> void encode(QStringView text, Write &&write)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        if (c == u'\r' || c == u'\n') {
            if (c == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n')
                ++i;
            write(QByteArrayView("\\par\r\n"));
        } else if (c == u'\\' || c == u'{' || c == u'}') {
            const char escaped[2] = {'\\', char(c)};
            write(QByteArrayView(escaped, 2));
        } else if (c == u'\t') {
            write(QByteArrayView("\\tab "));
        } else if (c >= 0x20 && c < 0x7F) {
            const char plain = char(c);
            write(QByteArrayView(&plain, 1));
        } else if (c >= 0xA0 && c <= 0xFF) {
            // Latin letters as bytes of the ANSI code page: every reader knows those.
            static const char Digits[] = "0123456789abcdef";
            const char hex[4] = {'\\', '\'', Digits[c >> 4], Digits[c & 0xF]};
            write(QByteArrayView(hex, 4));
        } else {
            write(QByteArrayView("\\u"));
            write(QByteArrayView(QByteArray::number(qint16(c))));
            write(QByteArrayView("?"));
        }
    }
}

void appendText(QByteArray &out, QStringView text)
{
    encode(text, [&out](QByteArrayView piece) { out.append(piece); });
}

} // namespace

namespace Rtf {

QByteArray header(const QList<quint32> &colours)
{
    QByteArray out = "{\\rtf1\\ansi\\ansicpg1252\\deff0\\uc1"
                     "{\\fonttbl{\\f0\\fswiss\\fcharset0 Sans Serif;}}\r\n"
                     "{\\colortbl ;";
    for (const quint32 colour : colours) {
        out += "\\red" + QByteArray::number(colour & 0xFF) + "\\green" +
               QByteArray::number((colour >> 8) & 0xFF) + "\\blue" +
               QByteArray::number((colour >> 16) & 0xFF) + ';';
    }
    out += "}\r\n\\pard\\f0\\fs20 ";
    return out;
}

QByteArray colourWord(qsizetype tableIndex)
{
    // Entry 0 of the written table is the automatic colour, so the first colour is \cf1.
    return "\\cf" + QByteArray::number(tableIndex + 1) + ' ';
}

qsizetype textLength(QStringView text)
{
    qsizetype length = 0;
    encode(text, [&length](QByteArrayView piece) { length += piece.size(); });
    return length;
}

QByteArray write(const RtfDocument &document)
{
    QList<quint32> colours = document.colours;
    for (const RtfRun &run : document.runs) {
        if (!colours.contains(run.colour))
            colours.append(run.colour);
    }
    QByteArray out = header(colours);
    std::optional<quint32> current;
    for (const RtfRun &run : document.runs) {
        if (run.text.isEmpty())
            continue;
        if (current != run.colour) {
            out += colourWord(colours.indexOf(run.colour));
            current = run.colour;
        }
        appendText(out, run.text);
    }
    out += Trailer;
    return out;
}

} // namespace Rtf
