#include "quicklist.h"

#include "textfile.h"

void QuickList::load(const QString &path)
{
    TextFileReader reader = TextFileReader::open(path);
    while (!reader.atEnd())
        m_items.append(reader.readLine());
    Q_EMIT changed();
}

void QuickList::save(const QString &path) const
{
    TextFileWriter writer;
    for (const QString &item : m_items)
        writer.line(item);
    writer.commit(path);
}

void QuickList::record(const QString &url)
{
    if (m_items.contains(url))
        return;
    m_items.insert(std::min<qsizetype>(m_insertAt, m_items.size()), url);
    ++m_insertAt;
    Q_EMIT changed();
}
