#pragma once

#include <QByteArray>

// A saved web page of about `size` bytes holding `links` links of every kind the grabber reads
// (double, single and no quotes; relative, root-relative, with "..", absolute) between lines of
// plain text. Link i names file i, so every address is different.
inline QByteArray bigPage(int links, qsizetype size)
{
    const QByteArray head = "<html><head><title>Archivos</title></head><body>\n";
    const QByteArray tail = "</body></html>\n";
    const QByteArray text = "Texto de relleno sin enlaces, con comas, puntos y otras cosas. ";
    QByteArray page = head;
    page.reserve(size + 1024);
    const qsizetype perLink = (size - head.size() - tail.size()) / links;
    for (int i = 0; i < links; ++i) {
        const QByteArray n = QByteArray::number(i);
        const qsizetype start = page.size();
        switch (i % 4) {
        case 0:
            page += "<p><a href=\"files/f" + n + ".zip\">archivo " + n + "</a> ";
            break;
        case 1:
            page += "<p><a href='sub/../f" + n + ".exe'>programa " + n + "</a> ";
            break;
        case 2:
            page += "<p><a href=/docs/f" + n + ".txt>texto " + n + "</a> ";
            break;
        default:
            page += "<p><a href=\"http://mirror.example/f" + n + ".iso\">imagen " + n + "</a> ";
            break;
        }
        while (page.size() - start + text.size() < perLink)
            page += text;
        page += QByteArray(perLink - (page.size() - start) - 1, 'x') + '\n';
    }
    return page + tail;
}
