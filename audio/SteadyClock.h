#pragma once

#include <chrono>

/** Times of this process, and those in the packets of its microphone. */
namespace SteadyClock {

/** Returns the seconds of the steady clock. */
inline double now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/** Converts a time of a packet header, microseconds of the steady clock, to seconds. */
inline double fromMicroseconds(unsigned long long microseconds)
{
    constexpr double microsecondsPerSecond = 1e6;
    return static_cast<double>(microseconds) / microsecondsPerSecond;
}

} // namespace SteadyClock
