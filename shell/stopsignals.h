#pragma once

#include <QObject>

class QSocketNotifier;

// SIGINT and SIGTERM turned into a signal of the event loop, so the program stops between
// events and saves what it must, as when its window is closed.
class StopSignals final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(StopSignals)

public:
    explicit StopSignals(QObject *parent = nullptr);
    ~StopSignals() override;

Q_SIGNALS:
    void received();

private:
    QSocketNotifier *m_notifier = nullptr;
};
