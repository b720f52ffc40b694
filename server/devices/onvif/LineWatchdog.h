#pragma once

#include <atomic>
#include <chrono>

/**
 * Finds out that a camera is gone which closes nothing. Signs of life are its RTP and RTCP packets, and
 * answers to questions. A camera that says nothing for a while is asked; one that says nothing for long is
 * lost. alive may be called on any thread, the rest on one.
 */
class LineWatchdog
{
public:
    /** A moment of the steady clock. */
    using Time = std::chrono::steady_clock::time_point;

    static constexpr std::chrono::milliseconds doubt{400}; ///< Of silence; then it is asked.

    /** What is to be done about a line. */
    enum class Verdict
    {
        Alive, ///< Nothing.
        Ask,   ///< Ask it now.
        Wait,  ///< It has been asked.
        Lost,  ///< End the line.
    };

    /** @param silence that makes a camera lost, more than doubt */
    LineWatchdog(std::chrono::milliseconds silence, Time now) : m_silence(silence), m_last(now) {}

    /** Takes a sign of life. */
    void alive(Time now) { m_last = now; }

    /** Returns what is to be done. Each silence has one question. */
    Verdict check(Time now)
    {
        const Time last = m_last;
        const auto silent = now - last;
        if (silent >= m_silence) {
            return Verdict::Lost;
        }
        if (silent < doubt) {
            return Verdict::Alive;
        }
        if (m_askedIn == last) {
            return Verdict::Wait;
        }
        m_askedIn = last;
        return Verdict::Ask;
    }

private:
    std::chrono::milliseconds m_silence;
    std::atomic<Time> m_last;
    Time m_askedIn = Time::min(); ///< The start of the silence in which it was asked last.
};
