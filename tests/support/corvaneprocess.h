#pragma once

#include <QProcess>
#include <QTest>

// The built program (CORVANE_BIN_DIR/corvane) started as a person or a peer program starts it;
// killed if the test leaves it running, so that no run outlives its folders.
class CorvaneProcess : public QProcess
{
public:
    static QString built() { return qEnvironmentVariable("CORVANE_BIN_DIR") + "/corvane"; }

    CorvaneProcess() = default;
    // Starts it at once; output is kept for the test unless `output` forwards or merges it.
    explicit CorvaneProcess(
        const QStringList &arguments,
        const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment(),
        ProcessChannelMode output = SeparateChannels)
    {
        launch(arguments, environment, output);
    }
    ~CorvaneProcess() override
    {
        if (state() != NotRunning) {
            kill();
            waitForFinished(3000);
        }
    }

    void launch(const QStringList &arguments, const QProcessEnvironment &environment,
                ProcessChannelMode output)
    {
        setProcessEnvironment(environment);
        setProcessChannelMode(output);
        start(built(), arguments);
    }
    // Waits up to `ms` with the test's event loop running, so that its servers answer meanwhile.
    // The exit status; -1 when it is still running or crashed.
    int waitForExit(int ms)
    {
        const bool done = QTest::qWaitFor([this] { return state() == NotRunning; }, ms);
        return done && error() != FailedToStart && exitStatus() == NormalExit ? exitCode() : -1;
    }
};
