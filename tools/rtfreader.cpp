#include "rtfcodec.h"

#include <QHash>
#include <QSet>
#include <algorithm>
#include <cctype>
#include <vector>

namespace {

// Bytes 0x80-0x9F of the ANSI code page; the rest of the upper half is Latin-1.
constexpr char16_t Cp1252High[32] = {
    0x20AC, 0xFFFD, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0xFFFD, 0x017D, 0xFFFD, 0xFFFD, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0xFFFD, 0x017E, 0x0178};

bool isPlain(char c)
{
    return c >= 0x20 && c < 0x7F && c != '\\' && c != '{' && c != '}';
}

QChar fromAnsi(uchar byte)
{
    return byte >= 0x80 && byte < 0xA0 ? QChar(Cp1252High[byte - 0x80]) : QChar(byte);
}

// Groups that hold no text of the document when they open with one of these words.
const QSet<QByteArray> &skippedDestinations()
{
    static const QSet<QByteArray> words = {"fonttbl",
                                           "stylesheet",
                                           "info",
                                           "pict",
                                           "object",
                                           "header",
                                           "headerl",
                                           "headerr",
                                           "headerf",
                                           "footer",
                                           "footerl",
                                           "footerr",
                                           "footerf",
                                           "footnote",
                                           "listtable",
                                           "listoverridetable",
                                           "revtbl",
                                           "rsidtbl",
                                           "filetbl",
                                           "xmlnstbl",
                                           "themedata",
                                           "latentstyles",
                                           "datastore",
                                           "generator",
                                           "fldinst",
                                           "pntext",
                                           "colorschememapping"};
    return words;
}

// Characters some writers give as words of their own.
QChar symbolFor(const QByteArray &word)
{
    static const QHash<QByteArray, char16_t> symbols = {
        {"emdash", 0x2014},    {"endash", 0x2013}, {"bullet", 0x2022},
        {"lquote", 0x2018},    {"rquote", 0x2019}, {"ldblquote", 0x201C},
        {"rdblquote", 0x201D}, {"emspace", 0x20},  {"enspace", 0x20}};
    return QChar(symbols.value(word, 0));
}

class RtfReader
{
public:
    RtfReader(const QByteArray &data, qsizetype start) : m_data(data), m_pos(start) {}

    RtfDocument read();

private:
    struct Group
    {
        quint32 colour = 0;
        int fallbackLength = 1; // characters after \uN that stand in for it
        bool skipped = false;
        bool colourTable = false;
    };

    void controlWord();
    void controlSymbol(char symbol);
    void word(const QByteArray &name, bool hasParameter, int parameter);
    void text(QChar c);
    void plainText();
    QString &runText();
    void tableText(char c);
    quint32 colourAt(int index) const;

    const QByteArray &m_data;
    qsizetype m_pos;
    std::vector<Group> m_groups;
    bool m_groupOpened = false; // the next word is the first of its group
    int m_fallbackLeft = 0;
    RtfDocument m_document;
    std::vector<std::optional<quint32>> m_table; // empty entries are the automatic colour
    int m_red = -1, m_green = -1, m_blue = -1;
};

RtfDocument RtfReader::read()
{
    while (m_pos < m_data.size()) {
        const char c = m_data[m_pos++];
        if (c == '{') {
            m_groups.push_back(m_groups.empty() ? Group() : m_groups.back());
            m_groupOpened = true;
            m_fallbackLeft = 0;
        } else if (c == '}') {
            m_groups.pop_back();
            m_fallbackLeft = 0;
            if (m_groups.empty())
                break; // the document's group is closed: the rest is not part of it
        } else if (c == '\\') {
            controlWord();
        } else if (c != '\r' && c != '\n') {
            m_groupOpened = false;
            if (m_groups.back().colourTable)
                tableText(c);
            else if (isPlain(c) && m_fallbackLeft == 0)
                plainText();
            else if (uchar(c) >= 0x20 || c == '\t')
                text(fromAnsi(uchar(c)));
        }
    }
    // Colours as our writer numbers them: its table starts with the automatic entry.
    for (const std::optional<quint32> &entry : m_table) {
        if (entry && !m_document.colours.contains(*entry))
            m_document.colours.append(*entry);
    }
    return std::move(m_document);
}

void RtfReader::controlWord()
{
    if (m_pos >= m_data.size())
        return;
    const char first = m_data[m_pos];
    if (!std::isalpha(uchar(first))) {
        ++m_pos;
        controlSymbol(first);
        return;
    }
    const qsizetype start = m_pos;
    while (m_pos < m_data.size() && std::isalpha(uchar(m_data[m_pos])))
        ++m_pos;
    const QByteArray name = m_data.mid(start, m_pos - start);
    const qsizetype digits = m_pos;
    if (m_pos < m_data.size() && m_data[m_pos] == '-')
        ++m_pos;
    while (m_pos < m_data.size() && m_pos - digits < 11 && std::isdigit(uchar(m_data[m_pos])))
        ++m_pos;
    bool hasParameter = false;
    const int parameter = m_data.mid(digits, m_pos - digits).toInt(&hasParameter);
    if (m_pos < m_data.size() && m_data[m_pos] == ' ')
        ++m_pos;
    word(name, hasParameter, parameter);
}

void RtfReader::controlSymbol(char symbol)
{
    Group &group = m_groups.back();
    m_groupOpened = false;
    if (symbol == '*') {
        group.skipped = true;
    } else if (symbol == '\'') {
        const QByteArray hex = m_data.mid(m_pos, 2);
        m_pos += hex.size();
        bool ok = false;
        const int byte = hex.toInt(&ok, 16);
        if (ok && hex.size() == 2)
            text(fromAnsi(uchar(byte)));
    } else if (symbol == '\\' || symbol == '{' || symbol == '}') {
        if (group.colourTable)
            tableText(symbol);
        else
            text(QLatin1Char(symbol));
    } else if (symbol == '~') {
        text(QChar(0x00A0));
    } else if (symbol == '_') {
        text(QLatin1Char('-'));
    } else if (symbol == '\r' || symbol == '\n') {
        // A backslash that ends a source line is a paragraph mark.
        text(QLatin1Char('\r'));
        text(QLatin1Char('\n'));
    }
}

void RtfReader::word(const QByteArray &name, bool hasParameter, int parameter)
{
    Group &group = m_groups.back();
    if (name == "bin" && hasParameter && parameter > 0) {
        m_pos = std::min(m_pos + parameter, m_data.size());
        return;
    }
    if (m_groupOpened && skippedDestinations().contains(name))
        group.skipped = true;
    m_groupOpened = false;
    if (group.skipped)
        return;
    if (m_fallbackLeft > 0) {
        --m_fallbackLeft;
        return;
    }
    if (name == "colortbl") {
        group.colourTable = true;
        m_table.clear();
    } else if (group.colourTable) {
        const int value = std::clamp(parameter, 0, 255);
        if (name == "red")
            m_red = value;
        else if (name == "green")
            m_green = value;
        else if (name == "blue")
            m_blue = value;
    } else if (name == "par" || name == "line") {
        text(QLatin1Char('\r'));
        text(QLatin1Char('\n'));
    } else if (name == "tab") {
        text(QLatin1Char('\t'));
    } else if (name == "cf") {
        group.colour = colourAt(hasParameter ? parameter : 0);
    } else if (name == "plain") {
        group.colour = 0;
    } else if (name == "uc" && hasParameter) {
        group.fallbackLength = std::clamp(parameter, 0, 10);
    } else if (name == "u" && hasParameter) {
        text(QChar(char16_t(parameter)));
        m_fallbackLeft = group.fallbackLength;
    } else if (const QChar symbol = symbolFor(name); !symbol.isNull()) {
        text(symbol);
    }
}

void RtfReader::text(QChar c)
{
    const Group &group = m_groups.back();
    if (group.skipped)
        return;
    if (m_fallbackLeft > 0) {
        --m_fallbackLeft;
        return;
    }
    runText() += c;
}

// A stretch of plain ASCII, taken whole for speed.
void RtfReader::plainText()
{
    const qsizetype start = m_pos - 1;
    while (m_pos < m_data.size() && isPlain(m_data[m_pos]))
        ++m_pos;
    if (!m_groups.back().skipped)
        runText() += QLatin1StringView(m_data.constData() + start, m_pos - start);
}

QString &RtfReader::runText()
{
    const quint32 colour = m_groups.back().colour;
    QList<RtfRun> &runs = m_document.runs;
    if (runs.isEmpty() || runs.last().colour != colour)
        runs.append(RtfRun{QString(), colour});
    return runs.last().text;
}

void RtfReader::tableText(char c)
{
    if (c != ';')
        return;
    if (m_red < 0 && m_green < 0 && m_blue < 0)
        m_table.emplace_back();
    else
        m_table.emplace_back(quint32(std::max(m_red, 0)) | quint32(std::max(m_green, 0)) << 8 |
                             quint32(std::max(m_blue, 0)) << 16);
    m_red = m_green = m_blue = -1;
}

quint32 RtfReader::colourAt(int index) const
{
    if (index < 0 || size_t(index) >= m_table.size() || !m_table[size_t(index)])
        return 0;
    return *m_table[size_t(index)];
}

} // namespace

namespace Rtf {

std::optional<RtfDocument> read(const QByteArray &data)
{
    qsizetype start = 0;
    while (start < data.size() && std::isspace(uchar(data[start])))
        ++start;
    if (!data.mid(start, 5).startsWith("{\\rtf"))
        return std::nullopt;
    return RtfReader(data, start).read();
}

} // namespace Rtf
