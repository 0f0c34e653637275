#include "historytext.h"

#include <QDateTime>

QString FormatoSpain(const QString &date)
{
    return date.mid(3, 2) + QLatin1Char('/') + date.left(2) + QLatin1Char('/') + date.right(4);
}

QString timeText(const QDateTime &moment)
{
    return moment.toString(QStringLiteral("HH:mm:ss"));
}

QString dateText(const QDateTime &moment)
{
    return moment.toString(QStringLiteral("MM/dd/yyyy"));
}
