#pragma once

#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>
#include <set>
#include <utility>

/**
 * One clock for any number of alarms: one timer, which waits for the earliest. A timer for each of thousands
 * would be searched for in Qt's list of all timers, again and again. Used on one thread, with an event loop.
 */
class AlarmClock
{
public:
    /** A moment of the steady clock. */
    using Time = std::chrono::steady_clock::time_point;

    /** One alarm, which rings once each time it is set. */
    class Alarm
    {
    public:
        /** @param ring called at the time; may set and clear any alarm, but not destroy its own */
        Alarm(std::shared_ptr<AlarmClock> clock, std::function<void()> ring);
        ~Alarm();
        Alarm(const Alarm&) = delete;
        Alarm& operator=(const Alarm&) = delete;

        /** Rings at a time, at once when that has passed, and not at the time that it was set to before. */
        void setTo(Time time);

        /** Does not ring. */
        void clear();

    private:
        friend class AlarmClock;

        std::shared_ptr<AlarmClock> m_clock;
        std::function<void()> m_ring;
        bool m_set = false;
        Time m_time;
    };

    /** @param now returns the time */
    explicit AlarmClock(std::function<Time()> now = &std::chrono::steady_clock::now);

    /** Returns the time. */
    Time now() const { return m_now(); }

    /** Rings all alarms whose time has come, the earliest first. Its timer calls it. */
    void ring();

private:
    void waitForNext();

    std::function<Time()> m_now;
    std::set<std::pair<Time, Alarm*>> m_alarms; ///< Those that are set.
    QTimer m_timer;
    Time m_awaited; ///< What the timer waits for, while it is active.
};
