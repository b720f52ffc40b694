#pragma once

#include "src/decoders/g729a/G729A.h"

/** The lag and the adaptive codebook (ITU-T G.729, clauses 4.1.2 and 4.1.3). */
namespace G729APitch {

struct Lag
{
    int whole;    ///< Samples, 19 to 144.
    int fraction; ///< Thirds of a sample, -1 to 1.
};

/** Of the first subframe. @param index 8 bits */
Lag firstLag(int index);

/** Of the second subframe. @param index 5 bits @param before the whole lag of the first */
Lag secondLag(int index, int before);

/** Whether a sum is held where a pair of taps could take it beyond 31 bits. */
enum class Guard
{
    None,
    FirstTaps, ///< Deliberate: only the four pairs next to the lag are guarded.
};

/**
 * Writes a subframe's adaptive codebook vector over 40 samples, which it may read back while it goes.
 *
 * @param exc the subframe's place; 154 samples before it are readable
 */
void adaptiveCodebook(std::int16_t* exc, Lag lag, Guard guard);

} // namespace G729APitch
