#pragma once

#include "audio/TimedSound.h"

#include <optional>

/** Delay and quality of an echo, measured on the sound. */
struct EchoMeasure
{
    double firstDelay = 0;  ///< From the microphone to the output at the first speech, seconds.
    double lastDelay = 0;   ///< The same at the last speech, seconds.
    int gaps = 0;           ///< Number of pauses in the output where the speech has none.
    double gapTime = 0;     ///< Sum of the gaps, seconds.
    double correlation = 0; ///< Median of the correlations of all pieces, 0 to 1.
    int pieces = 0;         ///< Number of pieces of speech that were found.
    int lost = 0;           ///< Number of pieces of speech that were not found.

    /**
     * Searches the recorded output for the captured speech, piece by piece.
     *
     * @param captured the captured speech, mono
     * @param received the recorded output, mono, at the same rate, with times of the same clock
     * @param maxDelay the longest delay that is searched, seconds
     * @return empty when no piece was found, or nothing was captured
     */
    static std::optional<EchoMeasure> between(const TimedSound& captured, const TimedSound& received,
                                              double maxDelay);
};
