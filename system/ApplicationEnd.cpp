#include "ApplicationEnd.h"

#include <QCoreApplication>

ApplicationEnd::ApplicationEnd(void (*routine)()) : m_routine(routine) {}

ApplicationEnd::~ApplicationEnd()
{
    qRemovePostRoutine(m_routine);
#ifndef Q_OS_WIN // where a library's destructors run when the process has no other threads any more
    m_routine();
#endif
}

void ApplicationEnd::arm()
{
    qRemovePostRoutine(m_routine); // it may wait already, and is to run once
    qAddPostRoutine(m_routine);
}
