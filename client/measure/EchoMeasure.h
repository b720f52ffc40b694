#pragma once

#include "audio/TimedSound.h"

#include <optional>

/** How an echo came back, measured on the sound itself. */
struct EchoMeasure
{
    double firstDelay = 0;  ///< From the mouth to the ear at the first speech, seconds.
    double lastDelay = 0;   ///< At the last speech, seconds.
    int gaps = 0;           ///< Places where the sound paused although the speech did not.
    double gapTime = 0;     ///< Together, seconds.
    double correlation = 0; ///< Of the pieces compared, their median, 0 to 1.
    int pieces = 0;         ///< Pieces of speech that were found again.
    int lost = 0;           ///< Pieces of speech that were not.

    /**
     * Looks for what was said in what was heard, piece by piece.
     *
     * @param said,heard at the same rate, mono, times of the same clock
     * @param maxDelay   the longest delay looked for, seconds
     * @return empty when nothing of it can be found, or nothing was said
     */
    static std::optional<EchoMeasure> between(const TimedSound& said, const TimedSound& heard,
                                              double maxDelay);
};
