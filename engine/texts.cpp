#include "texts.h"

#include <QLocale>
#include <cmath>

double roundTo2(double value)
{
    return std::nearbyint(value * 100.0) / 100.0;
}

QString decimalText(double value)
{
    QLocale locale;
    locale.setNumberOptions(QLocale::OmitGroupSeparator);
    QString text = locale.toString(roundTo2(value), 'f', 2);
    const QString point = locale.decimalPoint();
    if (text.contains(point)) {
        while (text.endsWith(QLatin1Char('0')))
            text.chop(1);
        if (text.endsWith(point))
            text.chop(point.size());
    }
    return text == QLatin1String("-0") ? QStringLiteral("0") : text;
}

QString sizeText(qint64 bytes, SizeUnits rule)
{
    constexpr qint64 Kb = 1024;
    constexpr qint64 Mb = 1048576;
    const bool strict = rule == SizeUnits::AboveThreshold;
    if (strict ? bytes > Mb : bytes >= Mb)
        return decimalText(double(bytes) / Mb) + QStringLiteral(" Mb");
    if (strict ? bytes > Kb : bytes >= Kb)
        return decimalText(double(bytes) / Kb) + QStringLiteral(" Kb");
    return QString::number(bytes) + QStringLiteral(" bytes");
}

QString elapsedText(qint64 seconds)
{
    const auto two = [](qint64 n) { return QStringLiteral("%1").arg(n, 2, 10, QLatin1Char('0')); };
    return QString::number(seconds / 3600) + QLatin1Char(':') + two(seconds / 60 % 60) +
           QLatin1Char(':') + two(seconds % 60);
}
