#pragma once

#include <cstdint>
#include <vector>

/** Mono sound with the time at which it starts. */
struct TimedSound
{
    std::vector<std::int16_t> samples; ///< Mono.
    int sampleRate = 0;                ///< Hz.
    double startTime = 0;              ///< Of the first sample, seconds of the steady clock.
};
