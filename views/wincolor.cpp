#include "wincolor.h"

#include <QGuiApplication>
#include <QPalette>
#include <cmath>

QColor winColor(quint32 value)
{
    if (value & 0x80000000u) {
        const QPalette palette = QGuiApplication::palette();
        switch (value & 0xFFu) {
        case 0x0D:
            return palette.color(QPalette::Highlight);
        case 0x0E:
            return palette.color(QPalette::HighlightedText);
        case 0x18:
            return palette.color(QPalette::ToolTipBase);
        case 0x08:
        case 0x12:
            return palette.color(QPalette::WindowText);
        default:
            return palette.color(QPalette::Window);
        }
    }
    return QColor(int(value & 0xFF), int((value >> 8) & 0xFF), int((value >> 16) & 0xFF));
}

int twipsToPixels(int twips)
{
    return int(std::lround(twips / 15.0));
}
