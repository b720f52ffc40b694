#pragma once

#include "src/decoders/g729a/G729A.h"

/** The code of a subframe, four pulses (ITU-T G.729, clauses 3.8 and 4.1.4). */
namespace G729AFixedCodebook {

/**
 * Decodes the pulses of a subframe.
 *
 * @param index their places, 13 bits
 * @param signs their signs, 4 bits
 * @param code  receives 40 samples, Q13
 */
void decode(int index, int signs, std::int16_t* code);

/** Adds the pitch to a code if the lag is shorter than the subframe; @p sharp is in Q14. */
void sharpen(std::int16_t* code, int lag, std::int16_t sharp);

} // namespace G729AFixedCodebook
