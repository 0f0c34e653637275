#include "textfile.h"

#include "failure.h"

#include <QFile>
#include <QSaveFile>

namespace {

const QByteArray LineEnd = QByteArrayLiteral("\r\n");

QString pastEnd()
{
    return QStringLiteral("Se ha sobrepasado el final del archivo");
}

} // namespace

void TextFileWriter::line(const QString &text)
{
    m_bytes += text.toUtf8() + LineEnd;
}

void TextFileWriter::number(qint64 value)
{
    // The sign position holds a blank for non-negative numbers; a blank always follows.
    m_bytes +=
        (value >= 0 ? QByteArray(" ") : QByteArray()) + QByteArray::number(value) + ' ' + LineEnd;
}

void TextFileWriter::boolean(bool value)
{
    m_bytes += (value ? QByteArrayLiteral("True") : QByteArrayLiteral("False")) + LineEnd;
}

void TextFileWriter::commit(const QString &path) const
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(m_bytes) != m_bytes.size() || !file.commit())
        throw Failure(file.errorString());
}

TextFileReader::TextFileReader(QByteArray content) : m_content(std::move(content)) {}

TextFileReader TextFileReader::open(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw Failure(QStringLiteral("No se puede abrir el archivo ") + path +
                      QStringLiteral(" (") + file.errorString() + QStringLiteral(")"));
    return TextFileReader(file.readAll());
}

void TextFileReader::requireData() const
{
    if (atEnd())
        throw Failure(pastEnd());
}

void TextFileReader::skipLineEnd()
{
    if (m_pos < m_content.size() && m_content[m_pos] == '\r')
        ++m_pos;
    if (m_pos < m_content.size() && m_content[m_pos] == '\n')
        ++m_pos;
}

QString TextFileReader::readLine()
{
    requireData();
    qsizetype end = m_pos;
    while (end < m_content.size() && m_content[end] != '\r' && m_content[end] != '\n')
        ++end;
    QString line = QString::fromUtf8(m_content.mid(m_pos, end - m_pos));
    m_pos = end;
    skipLineEnd();
    return line;
}

QString TextFileReader::readField()
{
    requireData();
    const auto isLineEnd = [](char c) { return c == '\r' || c == '\n'; };
    while (m_pos < m_content.size() && m_content[m_pos] == ' ')
        ++m_pos;
    QByteArray field;
    if (m_pos < m_content.size() && m_content[m_pos] == '"') {
        // A quote not closed on its line ends with the line: a field holding a line break would
        // split its record in two when the file is written back.
        qsizetype end = m_pos + 1;
        while (end < m_content.size() && m_content[end] != '"' && !isLineEnd(m_content[end]))
            ++end;
        field = m_content.mid(m_pos + 1, end - m_pos - 1);
        m_pos = end < m_content.size() && m_content[end] == '"' ? end + 1 : end;
        // Whatever stands between the closing quote and the delimiter is skipped.
        while (m_pos < m_content.size() && m_content[m_pos] != ',' && !isLineEnd(m_content[m_pos]))
            ++m_pos;
    } else {
        qsizetype end = m_pos;
        while (end < m_content.size() && m_content[end] != ',' && !isLineEnd(m_content[end]))
            ++end;
        field = m_content.mid(m_pos, end - m_pos);
        while (field.endsWith(' '))
            field.chop(1);
        m_pos = end;
    }
    if (m_pos < m_content.size() && m_content[m_pos] == ',')
        ++m_pos;
    else
        skipLineEnd();
    return QString::fromUtf8(field);
}

qint64 leadingNumber(QStringView text)
{
    qsizetype i = 0;
    while (i < text.size() && text[i] == QLatin1Char(' '))
        ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == QLatin1Char('-') || text[i] == QLatin1Char('+')))
        negative = text[i++] == QLatin1Char('-');
    qint64 value = 0;
    for (; i < text.size() && text[i].isDigit(); ++i) {
        if (value > (std::numeric_limits<qint64>::max() - 9) / 10)
            break;
        value = value * 10 + text[i].digitValue();
    }
    return negative ? -value : value;
}

bool toBoolean(const QString &text)
{
    const QString word = text.trimmed();
    if (word.compare(QLatin1String("True"), Qt::CaseInsensitive) == 0)
        return true;
    if (word.compare(QLatin1String("False"), Qt::CaseInsensitive) == 0)
        return false;
    bool ok = false;
    const qint64 number = word.toLongLong(&ok);
    if (!ok)
        throw Failure(QStringLiteral("No coinciden los tipos: \"") + text +
                      QStringLiteral("\" no es un valor lógico"));
    return number != 0;
}
