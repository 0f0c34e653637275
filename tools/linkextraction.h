#pragma once

#include <QString>
#include <QStringList>
#include <optional>

// The wanted endings: the built-in ones, then the lines of "listado.lst" in the program folder,
// which keeps the whole list (the built-in ones again included). The browser extension captures
// the same endings.
inline const QString EndingsFile = QStringLiteral("listado.lst");
const QStringList &builtInEndings();
// The whole list of the endings file at `path`, or the built-in endings without one; no ending
// twice and none empty. Throws Failure when the file cannot be read.
QStringList wantedEndings(const QString &path);

// The address a page's relative links are completed against: the page's address up to and
// including its last "/" (a page named "index.html" only when the address says so).
QString GetMainWeb(const QString &url);

// False when `address` ends with one of the wanted endings (plain suffix, exact case), true when
// none matches; with no endings at all every address is unwanted.
bool SearchExtension(const QString &address, const QStringList &ext);

// The endings kept in "listado.lst", one per line, blank lines too. Both throw Failure.
QStringList readEndings(const QString &path);
void writeEndings(const QString &path, const QStringList &endings);

// Walks the page text for the addresses that follow `pattern` ("a href=", "img src="), one at a
// time, never going back: each search starts where the previous address ended. An address is
// taken as written (quoted with double quotes, or up to the nearest of '"', '>', '<' and a blank),
// a leading "/" is dropped, anything not beginning with a scheme gets `base` in front, and ".."
// segments are applied. The rules are exact, odd cases included: a pattern at the very first
// character ends the scan, an empty quoted value runs on to the next double quote, and scheme
// names are compared case-sensitively.
class LinkScanner
{
public:
    LinkScanner(QString code, QString pattern, QString base);

    // The next address, or nullopt at the end. Throws Failure for an address that never ends
    // or whose ".." segments climb above the host; the addresses given before stay valid.
    std::optional<QString> next();

private:
    QString completed(QString address) const;

    QString m_code;
    QString m_pattern;
    QString m_base;
    qsizetype m_from = 0;
    bool m_done = false;
};

// Every address of `pattern` in `code`; `failure` holds the description of what ended the scan
// early, with the addresses found before it kept.
struct LinkList
{
    QStringList addresses;
    std::optional<QString> failure;
};
LinkList extractLinks(const QString &code, const QString &pattern, const QString &base);
