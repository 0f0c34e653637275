#pragma once

#include <QByteArray>
#include <QString>

// A saved web page of about `size` bytes holding `links` links of every kind the grabber reads
// (double, single and no quotes; relative, root-relative, with "..", absolute) between lines of
// plain text. Link i names file i, so every address is different.
inline QByteArray bigPage(int links, qsizetype size)
{
    const QByteArray head = "<html><head><title>Archivos</title></head><body>\n";
    const QByteArray tail = "</body></html>\n";
    const QByteArray text = "Texto de relleno sin enlaces, con comas, puntos y otras cosas. ";
    const char *const kinds[] = {"<p><a href=\"files/f%1.zip\">archivo %1</a> ",
                                 "<p><a href='sub/../f%1.exe'>programa %1</a> ",
                                 "<p><a href=/docs/f%1.txt>texto %1</a> ",
                                 "<p><a href=\"http://mirror.example/f%1.iso\">imagen %1</a> "};
    QByteArray page = head;
    page.reserve(size + 1024);
    const qsizetype perLink = (size - head.size() - tail.size()) / links;
    for (int i = 0; i < links; ++i) {
        const qsizetype start = page.size();
        page += QString::fromLatin1(kinds[i % 4]).arg(i).toLatin1();
        while (page.size() - start + text.size() < perLink)
            page += text;
        page += QByteArray(perLink - (page.size() - start) - 1, 'x') + '\n';
    }
    return page + tail;
}
