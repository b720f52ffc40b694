#pragma once

#include "src/decoders/g729a/G729A.h"

/** The random excitation of comfort noise (ITU-T G.729 Annex B, clause B.4.4). */
namespace G729ANoiseExcitation {

/** Words of the noise table for a subframe. */
inline constexpr int words = G729ANoiseWords / G729ASubframes;

/**
 * Makes a subframe's excitation: an adaptive part, a Gaussian one, and four pulses.
 *
 * @param exc    receives the subframe; the excitation before it is read
 * @param random 483 words
 * @param gain   1 to 15962
 */
void make(std::int16_t* exc, const std::int16_t* random, std::int16_t gain);

} // namespace G729ANoiseExcitation
