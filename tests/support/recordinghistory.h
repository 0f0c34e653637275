#pragma once

#include "historysink.h"

#include <QStringList>

// Keeps the history lines instead of showing them.
class RecordingHistory : public HistorySink
{
public:
    QStringList lines;
    void append(const QString &text, quint32) override { lines.append(text); }
};
