#pragma once

#include <chrono>
#include <cstdint>

namespace framesmith {

/**
 * Computes when packets are due, always from the start of the stream: errors of single waits do not add up,
 * so a stream stays in step with real time.
 */
class PacketClock
{
public:
    using Clock = std::chrono::steady_clock; ///< The clock of all times.

    /** @param sampleRate Hz, not 0 */
    PacketClock(Clock::time_point start, std::uint32_t samplesPerPacket, std::uint32_t sampleRate)
        : m_start(start), m_samplesPerPacket(samplesPerPacket), m_sampleRate(sampleRate)
    {
    }

    /** Returns when the last sample of a packet is recorded. @p packet counts from 0. */
    Clock::time_point dueTime(std::uint64_t packet) const
    {
        constexpr std::uint64_t nanosecondsPerSecond = 1'000'000'000;
        const std::uint64_t samples = (packet + 1) * m_samplesPerPacket;
        const std::uint64_t seconds = samples / m_sampleRate;
        const std::uint64_t rest = samples % m_sampleRate * nanosecondsPerSecond / m_sampleRate;
        return m_start + std::chrono::seconds(seconds) + std::chrono::nanoseconds(rest);
    }

private:
    Clock::time_point m_start;
    std::uint64_t m_samplesPerPacket;
    std::uint64_t m_sampleRate; // Hz
};

} // namespace framesmith
