#pragma once

#include <QObject>
#include <QThread>

#include <utility>

/** A thread on which work is done in its order, with less priority than the window. Its end waits for the
 * work that has begun. */
class WorkerThread
{
public:
    /** Starts it. */
    WorkerThread()
    {
        m_worker.moveToThread(&m_thread);
        m_thread.start(QThread::LowPriority);
    }
    ~WorkerThread()
    {
        m_thread.quit();
        m_thread.wait();
    }

    /** Does some work there, later. @param work is called without arguments */
    template<class Work>
    void run(Work work)
    {
        QMetaObject::invokeMethod(&m_worker, std::move(work), Qt::QueuedConnection);
    }

private:
    QThread m_thread;
    QObject m_worker; ///< Lives on m_thread.
};
