#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <optional>

// A stretch of text in one colour (0x00BBGGRR). Line breaks are CR LF.
struct RtfRun
{
    QString text;
    quint32 colour = 0;

    friend bool operator==(const RtfRun &, const RtfRun &) = default;
};

// A rich-text document reduced to what the history log keeps: coloured text and the colour
// table it is written with (`\cfN` names colours[N - 1]; entry 0 of the written table is the
// automatic colour).
struct RtfDocument
{
    QList<quint32> colours;
    QList<RtfRun> runs;
};

namespace Rtf {

// A complete RTF document: colour table, one `\cf` per change of colour, CR LF as `\par`.
// Colours of the runs missing from the table are added to its end.
QByteArray write(const RtfDocument &document);

// Text and colours of an RTF document, whoever wrote it; what it does not know it skips, and
// a truncated document gives what came before the cut. nullopt when `data` is not RTF at all.
std::optional<RtfDocument> read(const QByteArray &data);

// The parts write() is made of, so that a document's written length can be kept up to date
// without writing it: header(colours), then per run an optional colourWord and its text, then
// the trailer. Text whose CR LF pairs are not split between two calls adds up exactly.
QByteArray header(const QList<quint32> &colours);
QByteArray colourWord(qsizetype tableIndex);
qsizetype textLength(QStringView text);
inline constexpr QByteArrayView Trailer = "}\r\n";

} // namespace Rtf
