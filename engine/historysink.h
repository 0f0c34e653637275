#pragma once

#include <QString>

// Where the history lines go: the coloured log window, or plain lines without a screen.
class HistorySink
{
public:
    virtual ~HistorySink() = default;
    // Appends `text` (with any line break it starts with) in `colour` (0x00BBGGRR).
    virtual void append(const QString &text, quint32 colour) = 0;
};

namespace HistoryColour {
inline constexpr quint32 Black = 0x000000;
inline constexpr quint32 Red = 255;
inline constexpr quint32 DarkRed = 128;
inline constexpr quint32 Green = 47872;
inline constexpr quint32 Blue = 0xC00000;
} // namespace HistoryColour
