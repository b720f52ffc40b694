#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>

/**
 * Finds out that a camera does not take what is sent to it by TCP, though it may send itself: what waits in
 * this machine would be played late. Used by one thread.
 */
class LineBacklog
{
public:
    /** A moment of the steady clock. */
    using Time = std::chrono::steady_clock::time_point;

    /** @param bytesPerSecond of the talk; half a second of it may wait */
    explicit LineBacklog(std::int64_t bytesPerSecond = 0)
        : m_maxWaiting(std::max(minWaiting, bytesPerSecond / 2))
    {
    }

    /** Takes how many bytes wait. */
    void look(std::int64_t waiting, Time now)
    {
        m_since = waiting > m_maxWaiting ? std::min(m_since, now) : Time::max();
    }

    /** Whether too many wait for more to be sent. */
    bool isBehind() const { return m_since != Time::max(); }

    /** Whether they do for so long. */
    bool isBehindFor(std::chrono::milliseconds time, Time now) const
    {
        return isBehind() && now - m_since >= time;
    }

private:
    static constexpr std::int64_t minWaiting = 4096; ///< Bytes, half a second of G.711.

    std::int64_t m_maxWaiting;
    Time m_since = Time::max();
};
