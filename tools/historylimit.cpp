// The size limit of the history log: whole first lines go until the RTF fits in `histsize`
// Kbytes.
#include "desktop.h"
#include "historylog.h"
#include "settings.h"

#include <algorithm>

void HistoryLog::limitSize()
{
    const qint64 limit = qint64(m_settings.histsize) * 1024;
    // The search position is not reset after a deletion, so the next search skips the first
    // p - 1 characters of the shorter text and can take several lines at once.
    qsizetype p = 1;
    while (rtfLength() > limit) {
        size_t piece = 0;
        p = findLineBreak(p, piece);
        if (p == 0) {
            // The next search would start at position 0, which is no position: stop trimming,
            // say so once and carry on with the log as it is.
            if (!m_limitErrorShown) {
                m_limitErrorShown = true;
                m_desktop.messageBox(
                    QStringLiteral("Argumento no válido: el historial supera el tamaño máximo y "
                                   "no quedan líneas que borrar."),
                    Desktop::Icon::Critical);
            }
            return;
        }
        removeThrough(piece);
    }
}

// The 1-based position of the first CR LF at or after `position` in the plain text, and the
// piece it ends; 0 when there is none.
qsizetype HistoryLog::findLineBreak(qint64 position, size_t &piece) const
{
    const qint64 at = m_origin + position - 1;
    if (at >= m_end)
        return 0;
    auto found = std::upper_bound(m_pieces.begin(), m_pieces.end(), at,
                                  [](qint64 value, const Piece &p) { return value < p.start; });
    for (auto it = std::prev(found); it != m_pieces.end(); ++it) {
        const qint64 carriageReturn = it->start + it->text.size() - 2;
        if (it->text.endsWith(QStringLiteral("\r\n")) && carriageReturn >= at) {
            piece = size_t(it - m_pieces.begin());
            return qsizetype(carriageReturn - m_origin + 1);
        }
    }
    return 0;
}

// Deletes the text from the start through the end of piece `last`, which ends in CR LF.
void HistoryLog::removeThrough(size_t last)
{
    int lines = 0;
    quint32 colour = 0;
    for (size_t i = 0; i <= last; ++i) {
        const Piece &first = m_pieces.front();
        lines += first.text.endsWith(QStringLiteral("\r\n")) ? 1 : 0;
        colour = first.colour;
        m_bodyLength -= first.length;
        m_pieces.pop_front();
    }
    if (m_pieces.empty()) {
        m_origin = m_end;
    } else {
        // The new first piece needs its colour word when the one before it had its colour.
        if (m_pieces.front().colour == colour) {
            const qint64 word = Rtf::colourWord(m_colours.indexOf(colour)).size();
            m_pieces.front().length += word;
            m_bodyLength += word;
        }
        m_origin = m_pieces.front().start;
    }
    Q_EMIT linesRemoved(lines);
}

void HistoryLog::removeAll()
{
    m_pieces.clear();
    m_colours.clear();
    m_origin = m_end;
    m_headerLength = Rtf::header(m_colours).size();
    m_bodyLength = 0;
}
