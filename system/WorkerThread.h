#pragma once

#include <QObject>

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

/**
 * A thread on which work is done in its order. Made, used and destroyed on one thread, which has an event
 * loop; its end waits for the work that has begun, and drops the rest.
 *
 * Work and report run on different threads: what one shares with the other it must not use after it has
 * handed it over.
 */
class WorkerThread : public QObject
{
    Q_OBJECT

public:
    /** What is to be done with the result of a work, on the thread that asked for it. */
    using Report = std::function<void()>;

    /** Starts it. @param last done there before it ends, where it is not null */
    explicit WorkerThread(std::function<void()> last = nullptr);
    ~WorkerThread() override;

    /** Does some work there, later. @param work returns its report, which is called after it, not null */
    void run(std::function<Report()> work);

Q_SIGNALS:
    /** There is a report, from the worker's thread. */
    void reported(QPrivateSignal);

private:
    void loop();
    void deliver();

    const std::function<void()> m_last;
    std::mutex m_mutex; ///< Of all below but the thread.
    std::condition_variable m_wake;
    std::deque<std::function<Report()>> m_work;
    std::deque<Report> m_reports;
    bool m_ends = false;
    std::thread m_thread;
};
