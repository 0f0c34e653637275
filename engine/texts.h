#pragma once

#include <QString>

// A value rounded to 2 decimals (half to even), without trailing zeros, with the locale's
// decimal separator: 1.5 -> "1.5", 2.0 -> "2".
QString decimalText(double value);
double roundTo2(double value);

// Two rules exist for where a size text changes unit: the transfer switches at 1024 bytes
// ("1 Kb"), the inactive list only above it ("1024 bytes").
enum class SizeUnits
{
    FromThreshold,
    AboveThreshold
};
QString sizeText(qint64 bytes, SizeUnits rule);

// Seconds as hours:minutes:seconds, minutes and seconds padded to two digits: "1:02:05".
QString elapsedText(qint64 seconds);
