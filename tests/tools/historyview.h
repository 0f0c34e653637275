#pragma once

#include "rtfcodec.h"

#include <QStringList>
#include <QTextBlock>
#include <QTextDocument>

// "colour:text | colour:text ...", neighbours of one colour joined, colours 0x00BBGGRR in
// decimal: one description for documents, the log and what its window shows.
inline QString describe(const QList<RtfRun> &runs)
{
    QStringList parts;
    quint32 colour = 0;
    for (const RtfRun &run : runs) {
        if (run.text.isEmpty())
            continue;
        if (parts.isEmpty() || run.colour != colour)
            parts << QString::number(run.colour) + QLatin1Char(':');
        parts.last() += run.text;
        colour = run.colour;
    }
    return parts.join(QStringLiteral(" | "));
}

// Block separators count as CR LF; the document keeps their format as the next block's.
inline QString describe(const QTextDocument &document)
{
    const auto colourOf = [](const QTextCharFormat &format) {
        const QColor c = format.foreground().color();
        return quint32(c.red()) | quint32(c.green()) << 8 | quint32(c.blue()) << 16;
    };
    QList<RtfRun> runs;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        for (auto it = block.begin(); !it.atEnd(); ++it)
            runs.append({it.fragment().text(), colourOf(it.fragment().charFormat())});
        if (block.next().isValid())
            runs.append({QStringLiteral("\r\n"), colourOf(block.next().charFormat())});
    }
    return describe(runs);
}
