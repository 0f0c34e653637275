#pragma once

#include "historylog.h"

#include <QStringList>
#include <QTextBlock>
#include <QTextDocument>

// "colour:text | colour:text ...", neighbours of one colour joined, colours as 0x00BBGGRR in
// decimal: the same description for the log and for what its window shows.
class ColouredText
{
public:
    void add(const QString &text, quint32 colour)
    {
        if (text.isEmpty())
            return;
        if (!m_text.isEmpty() && colour != m_colour)
            flush();
        m_text += text;
        m_colour = colour;
    }
    QString result()
    {
        flush();
        return m_parts.join(QStringLiteral(" | "));
    }

private:
    void flush()
    {
        if (!m_text.isEmpty())
            m_parts << QString::number(m_colour) + QLatin1Char(':') + m_text;
        m_text.clear();
    }

    QStringList m_parts;
    QString m_text;
    quint32 m_colour = 0;
};

inline QString describeLog(const HistoryLog &log)
{
    ColouredText out;
    for (const RtfRun &run : log.document().runs)
        out.add(run.text, run.colour);
    return out.result();
}

inline quint32 colourOf(const QTextCharFormat &format)
{
    const QColor c = format.foreground().color();
    return quint32(c.red()) | quint32(c.green()) << 8 | quint32(c.blue()) << 16;
}

// Block separators count as CR LF; the document keeps their format as the next block's.
inline QString describeDocument(const QTextDocument &document)
{
    ColouredText out;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        for (auto it = block.begin(); !it.atEnd(); ++it)
            out.add(it.fragment().text(), colourOf(it.fragment().charFormat()));
        if (block.next().isValid())
            out.add(QStringLiteral("\r\n"), colourOf(block.next().charFormat()));
    }
    return out.result();
}
