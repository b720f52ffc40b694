#pragma once

#include <QProcess>

#ifdef Q_OS_LINUX
#include <csignal>
#include <sys/prctl.h>
#endif

/** A program that a test starts for itself, such as a sound server; on Linux it ends with the test, also when
 * that crashes: otherwise it would hold the test's standard error open, which ctest reads until its time-out.
 * It ends with the thread that started it. */
class ChildProcess : public QProcess
{
public:
    using QProcess::QProcess;

protected:
#ifdef Q_OS_LINUX
    void setupChildProcess() override
    {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
    }
#endif
};
