#pragma once

#include "src/decoders/g729a/G729A.h"

/** Four pulses a subframe (ITU-T G.729, clauses 3.8 and 4.1.4). */
namespace G729AFixedCodebook {

/** @param index 13 bits, the places @param signs 4 bits @param code 40 samples, Q13 */
void decode(int index, int signs, std::int16_t* code);

/** Puts the pitch into the code where the lag is shorter than the subframe. @param sharp Q14 */
void sharpen(std::int16_t* code, int lag, std::int16_t sharp);

} // namespace G729AFixedCodebook
