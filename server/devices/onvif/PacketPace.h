#pragma once

#include <algorithm>
#include <chrono>
#include <utility>

/**
 * When packets may leave that are to have an even pace, though they are said in bursts. Packets that are late
 * leave at up to twice their pace, and a delay that no burst needs any more is worked off: else each stop
 * would add to the delay of the talk. Used by one thread.
 */
class PacketPace
{
public:
    using Time = std::chrono::steady_clock::time_point; ///< A moment of the steady clock.
    using Duration = Time::duration;                    ///< A part of its time.

    /** Returns when the next packet may leave. @param said when its sound came @param duration of the sound
     */
    Time due(Time said, Duration duration)
    {
        const Time turn = std::max(m_turn, said);
        m_least = std::min(m_least, turn - said);
        if (said - m_start >= period) {
            m_start = said;
            m_needless = std::exchange(m_least, Duration::max());
        }
        const Duration step = std::min(m_needless, duration / 2);
        m_needless -= step;
        m_turn = turn + duration - step;
        return std::max(turn, m_left + duration / 2);
    }

    /** Takes when that packet left. */
    void left(Time time) { m_left = time; }

private:
    static constexpr std::chrono::seconds period{1}; ///< In which bursts show what delay they need.

    Time m_turn{};                      ///< Of the next packet.
    Time m_left{};                      ///< When the last one did.
    Time m_start{};                     ///< Of the period.
    Duration m_least = Duration::max(); ///< The least delay of a packet in it.
    Duration m_needless{0};             ///< What of the delay is to be worked off.
};
