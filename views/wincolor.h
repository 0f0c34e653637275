#pragma once

#include <QColor>

// Colours are kept as the program's colour values: 0x00BBGGRR, or a system colour (highest bit
// set) named by the index in the low bits.
inline constexpr quint32 SystemHighlight = 0x8000000D;
inline constexpr quint32 SystemHighlightText = 0x8000000E;
inline constexpr quint32 SystemToolTipBack = 0x80000018;

QColor winColor(quint32 value);

// 15 twips make one logical pixel at 96 DPI.
int twipsToPixels(int twips);
