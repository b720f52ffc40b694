#include "lifetime/ApplicationEnd.h"

#include <QCoreApplication>
#include <QThread>

#ifndef Q_OS_WIN
namespace {

// Qt's PulseAudio plug-in takes its connection down in a static destructor, without the lock of the thread
// that reads from it: a message that comes at that moment ends the process in libpulse. The sound server
// sends some when a stream has ended; they come within 20 ms, or a few times that on a busy machine. One case
// in 10,000 remains on a sound server with "srbchannel" on: that channel and the connection are two watches
// of the other thread, which wakes up for the first while the second is taken away.
constexpr unsigned long settlingTime = 100; // ms

} // namespace
#endif

ApplicationEnd::ApplicationEnd(void (*routine)()) : m_routine(routine) {}

ApplicationEnd::~ApplicationEnd()
{
    qRemovePostRoutine(m_routine);
#ifndef Q_OS_WIN // where a library's destructors run when the process has no other threads any more
    m_routine();
    QThread::msleep(settlingTime);
#endif
}

void ApplicationEnd::arm()
{
    qRemovePostRoutine(m_routine); // it may wait already, and is to run once
    qAddPostRoutine(m_routine);
}
