#include "version.h"

#include <QStringList>

QString versionText()
{
    const QStringList parts = QStringLiteral(CORVANE_VERSION).split(QLatin1Char('.'));
    return parts.value(0) + QLatin1Char('.') + parts.value(1) + QStringLiteral(" Compilación ") +
           parts.value(2, QStringLiteral("0"));
}
