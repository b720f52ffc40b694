#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>

/** What keeps back some of what it was given. */
class Flushable
{
public:
    virtual ~Flushable() = default;

    /** Writes what it keeps back, on any thread; returns false when that fails. */
    virtual bool flush() = 0;
};

/**
 * One thread that writes what files keep back, within a second. A file that is written to all the time costs
 * it one visit a second, and one that is not costs nothing. Any thread.
 */
class FlushThread
{
public:
    /** Returns the one of the process, which ends with its last user; null when the system has no thread for
     * it. */
    static std::shared_ptr<FlushThread> shared();

    /** Starts the thread. May throw std::system_error. */
    FlushThread();
    ~FlushThread();
    FlushThread(const FlushThread&) = delete;
    FlushThread& operator=(const FlushThread&) = delete;

    /** Calls flush within a second, unless the file is gone by then; again a second later if it fails. */
    void flushSoon(std::weak_ptr<Flushable> file);

private:
    using Clock = std::chrono::steady_clock;

    struct Visit
    {
        Clock::time_point due;
        std::weak_ptr<Flushable> file;
    };

    void loop();

    std::mutex m_mutex; ///< Of all below but the thread.
    std::condition_variable m_changed;
    std::deque<Visit> m_visits; ///< In the order of their times.
    bool m_ends = false;
    std::thread m_thread;
};
