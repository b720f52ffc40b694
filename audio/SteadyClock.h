#pragma once

#include <chrono>

/** Times within this process, and those in the packets of its microphone. */
namespace SteadyClock {

/** Seconds of the steady clock. */
inline double now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/** A time in a packet header. @param microseconds of the steady clock */
inline double fromMicroseconds(unsigned long long microseconds)
{
    constexpr double microsecondsPerSecond = 1e6;
    return static_cast<double>(microseconds) / microsecondsPerSecond;
}

} // namespace SteadyClock
