#pragma once

#include <chrono>
#include <cstdint>

/** Lets through no more packets in a second than a stream can need. Used by one thread at a time. */
class PacketRate
{
public:
    /** A moment of the steady clock. */
    using Time = std::chrono::steady_clock::time_point;

    /** Of a voice, in a second; those of 2 ms, or of 20 ms that come in bursts. */
    static constexpr int maxPackets = 500;
    /** Of a video, in a second; 60 access units of 1 MiB in packets of 1,400 bytes are 45,000. */
    static constexpr int maxVideoPackets = 50000;
    /** Bytes beyond which a packet counts as several. */
    static constexpr int packetBytes = 1500;

    explicit PacketRate(int most = maxPackets) : m_most(most) {}

    /** Whether a packet that comes now is let through. */
    bool takes(Time now, std::size_t bytes = 0)
    {
        if (now - m_start >= std::chrono::seconds(1)) {
            m_start = now;
            m_count = 0;
        }
        m_count += bytes <= packetBytes ? 1 : static_cast<std::int64_t>((bytes - 1) / packetBytes + 1);
        return m_count <= m_most;
    }

private:
    int m_most;
    Time m_start;
    std::int64_t m_count = 0; ///< Since m_start.
};
