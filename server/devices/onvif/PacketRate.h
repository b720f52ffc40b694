#pragma once

#include <chrono>
#include <cstdint>

/** Lets through no more packets in a second than a voice can need. Used by one thread at a time. */
class PacketRate
{
public:
    /** A moment of the steady clock. */
    using Time = std::chrono::steady_clock::time_point;

    static constexpr int maxPackets = 500; ///< In a second; those of 2 ms, or of 20 ms that come in bursts.

    /** Whether a packet that comes now is let through. */
    bool takes(Time now)
    {
        if (now - m_start >= std::chrono::seconds(1)) {
            m_start = now;
            m_count = 0;
        }
        return ++m_count <= maxPackets;
    }

private:
    Time m_start;
    std::int64_t m_count = 0; ///< Since m_start.
};
