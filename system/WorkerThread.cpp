#include "system/WorkerThread.h"

#include <utility>

WorkerThread::WorkerThread(std::function<void()> last) : m_last(std::move(last))
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
            break;
        }
        auto work = std::move(m_work.front());
        m_work.pop_front();
        lock.unlock();
        Report report = work();
        work = nullptr; // before its report is handed over, with which it may share data
        lock.lock();
        m_reports.push_back(std::move(report));
        Q_EMIT reported(QPrivateSignal());
    }
    lock.unlock();
    if (m_last) {
        m_last();
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
