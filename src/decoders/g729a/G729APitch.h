#pragma once

#include "src/decoders/g729a/G729A.h"

/** The lag and the adaptive codebook (ITU-T G.729, clauses 4.1.2 and 4.1.3). */
namespace G729APitch {

/** A lag of the adaptive codebook. */
struct Lag
{
    int whole;    ///< Samples, 19 to 144.
    int fraction; ///< Thirds of a sample, -1 to 1.
};

/** Returns the lag of the first subframe from its index, 8 bits. */
Lag firstLag(int index);

/** Returns the lag of the second subframe from its index, 5 bits, and the whole lag of the first. */
Lag secondLag(int index, int before);

/** The pairs of taps whose sum is limited to 31 bits. */
enum class Guard
{
    None,      ///< No pair.
    FirstTaps, ///< Deliberate: only the four pairs next to the lag.
};

/**
 * Computes a subframe's adaptive codebook vector, 40 samples. A lag shorter than the subframe reads samples
 * that were just written.
 *
 * @param exc   receives the vector; 154 samples before it are readable
 * @param lag   the lag
 * @param guard the pairs of taps to limit
 */
void adaptiveCodebook(std::int16_t* exc, Lag lag, Guard guard);

} // namespace G729APitch
