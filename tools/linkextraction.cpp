#include "linkextraction.h"

#include "failure.h"
#include "textfile.h"
#include "urls.h"

#include <QFileInfo>

const QStringList &builtInEndings()
{
    static const QStringList endings = {
        QStringLiteral("exe"), QStringLiteral("zip"), QStringLiteral("ace"), QStringLiteral("tar"),
        QStringLiteral("iso"), QStringLiteral("bmp"), QStringLiteral("gif"), QStringLiteral("jpg")};
    return endings;
}

QStringList wantedEndings(const QString &path)
{
    QStringList endings = builtInEndings();
    if (QFileInfo::exists(path))
        endings += readEndings(path);
    endings.removeAll(QString());
    endings.removeDuplicates();
    return endings;
}

QString GetMainWeb(const QString &url)
{
    // The last part of the path as written (not decoded as a file name is), up to a "/".
    const QString index = QStringLiteral("index.html");
    const qsizetype slashes = url.indexOf(QStringLiteral("//"));
    if (slashes < 0)
        return url.endsWith(index) ? url.chopped(index.size()) : url;
    QString left = url.mid(slashes + 2);
    const qsizetype first = left.indexOf(QLatin1Char('/'));
    if (first >= 0)
        left = left.mid(first + 1);
    const qsizetype last = left.lastIndexOf(QLatin1Char('/'));
    return url.chopped((last > 0 ? left.mid(last + 1) : left).size());
}

bool SearchExtension(const QString &address, const QStringList &ext)
{
    for (const QString &ending : ext) {
        if (address.endsWith(ending))
            return false;
    }
    return true;
}

QStringList readEndings(const QString &path)
{
    TextFileReader reader = TextFileReader::open(path);
    QStringList endings;
    while (!reader.atEnd())
        endings.append(reader.readLine());
    return endings;
}

void writeEndings(const QString &path, const QStringList &endings)
{
    TextFileWriter writer;
    for (const QString &ending : endings)
        writer.line(ending);
    writer.commit(path);
}

LinkScanner::LinkScanner(QString code, QString pattern, QString base)
    : m_code(std::move(code)), m_pattern(std::move(pattern)), m_base(std::move(base))
{}

std::optional<QString> LinkScanner::next()
{
    if (m_done)
        return std::nullopt;
    const qsizetype found = m_code.indexOf(m_pattern, m_from);
    if (found <= 0) {
        m_done = true;
        return std::nullopt;
    }
    const qsizetype value = found + m_pattern.size();
    const QChar quote = QLatin1Char('"');
    qsizetype end = -1;
    qsizetype start = value;
    if (value < m_code.size() && m_code[value] == quote) {
        start = value + 1;
        // The closing quote is looked for from the second character of the value on, so an
        // empty value "" runs on to the next double quote of the page.
        end = m_code.indexOf(quote, value + 2);
    } else {
        // An unquoted value ends at the nearest of these, looked for from its third character.
        for (const QChar stop :
             {quote, QChar(QLatin1Char('>')), QChar(QLatin1Char('<')), QChar(QLatin1Char(' '))}) {
            const qsizetype at = m_code.indexOf(stop, value + 2);
            if (at >= 0 && (end < 0 || at < end))
                end = at;
        }
    }
    if (end < 0) {
        m_done = true;
        throw Failure(QStringLiteral("La dirección que empieza en el carácter ") +
                      QString::number(value + 1) +
                      QStringLiteral(" de la página no termina antes del final del texto."));
    }
    m_from = end;
    try {
        return completed(m_code.mid(start, end - start));
    } catch (const Failure &) {
        m_done = true;
        throw;
    }
}

QString LinkScanner::completed(QString address) const
{
    // Root-relative addresses are completed against the page's folder, not the server's root.
    if (address.startsWith(QLatin1Char('/')))
        address.remove(0, 1);
    if (!address.startsWith(QLatin1String("ftp://")) &&
        !address.startsWith(QLatin1String("http://")) &&
        !address.startsWith(QLatin1String("https://")))
        address.prepend(m_base);
    return ResolveDots(address);
}

LinkList extractLinks(const QString &code, const QString &pattern, const QString &base)
{
    LinkList list;
    LinkScanner scanner(code, pattern, base);
    try {
        while (std::optional<QString> address = scanner.next())
            list.addresses.append(std::move(*address));
    } catch (const Failure &failure) {
        list.failure = failure.description();
    }
    return list;
}
