#include "system/WorkerThread.h"

#include <utility>

WorkerThread::WorkerThread()
{
    connect(this, &WorkerThread::reported, this, &WorkerThread::deliver, Qt::QueuedConnection);
    m_thread = std::thread([this] { loop(); });
}

WorkerThread::~WorkerThread()
{
    {
        const std::lock_guard lock(m_mutex);
        m_ends = true;
    }
    m_wake.notify_one();
    m_thread.join();
}

void WorkerThread::run(std::function<Report()> work)
{
    {
        const std::lock_guard lock(m_mutex);
        m_work.push_back(std::move(work));
    }
    m_wake.notify_one();
}

void WorkerThread::loop()
{
    std::unique_lock lock(m_mutex);
    while (true) {
        m_wake.wait(lock, [this] { return m_ends || !m_work.empty(); });
        if (m_ends) {
            return;
        }
        const auto work = std::move(m_work.front());
        m_work.pop_front();
        lock.unlock();
        Report report = work();
        lock.lock();
        m_reports.push_back(std::move(report));
        Q_EMIT reported(QPrivateSignal());
    }
}

void WorkerThread::deliver()
{
    std::deque<Report> reports;
    {
        const std::lock_guard lock(m_mutex);
        reports.swap(m_reports);
    }
    for (const Report& report : reports) {
        report();
    }
}
