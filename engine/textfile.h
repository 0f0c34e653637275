#pragma once

#include <QByteArray>
#include <QString>

// The positional text files of the program (lists and settings): one value per line, CR LF
// line ends, numbers in print form (" 12 ", "-3 "), booleans as True/False.
class TextFileWriter
{
public:
    void line(const QString &text);
    void number(qint64 value);
    void boolean(bool value);

    const QByteArray &bytes() const { return m_bytes; }
    // Replaces `path` atomically; throws Failure.
    void commit(const QString &path) const;

private:
    QByteArray m_bytes;
};

// Reads such a file value by value. Every read past the end throws Failure.
class TextFileReader
{
public:
    explicit TextFileReader(QByteArray content);
    // Throws Failure when the file cannot be read.
    static TextFileReader open(const QString &path);

    bool atEnd() const { return m_pos >= m_content.size(); }
    // Everything up to the line end (CR LF, LF or CR), blanks included.
    QString readLine();
    // Leading blanks skipped, up to the next comma or line end, trailing blanks dropped; a quoted
    // field runs to its closing quote on the same line. The next read goes on after the comma.
    QString readField();

private:
    void requireData() const;
    void skipLineEnd();

    QByteArray m_content;
    qsizetype m_pos = 0;
};

// The leading number of a text, 0 when there is none (blanks before it are skipped).
qint64 leadingNumber(QStringView text);
// "True"/"False" in any case, or a number (non-zero is true); anything else throws Failure.
bool toBoolean(const QString &text);
