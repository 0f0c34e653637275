#pragma once

#include <QString>

class QDateTime;

// The date of a history line: a month/day/year text turned into day/month/year by position
// alone (characters 4-5, the first two, the last four); it does no parsing.
QString FormatoSpain(const QString &date);

// The time of day as history lines print it, and the date text FormatoSpain expects.
QString timeText(const QDateTime &moment);
QString dateText(const QDateTime &moment);
