#pragma once

#include <QTimer>
#include <QWidget>

// The first window: the program's name, version and the system's version, until its timer's
// first tick hands over to the main window.
class SplashWindow final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SplashWindow)

public:
    explicit SplashWindow(QWidget *parent = nullptr);

Q_SIGNALS:
    // The timer's first tick: time to show the main window.
    void done();

private:
    QTimer m_timer;
};
