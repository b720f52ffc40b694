#pragma once

#include "src/decoders/g7221/G7221.h"

/** From coefficients to samples: the inverse modulated lapped transform (ITU-T G.722.1, clause 4.7). */
namespace G7221Synthesis {

/** Transforms the state's coefficients and adds the overlap into its output. */
void CoefsToSamples(G7221State& state);

/** A type IV discrete cosine transform of length 320. @param coefs,samples 320 each, not overlapping */
void DctTypeIV(const std::int16_t* coefs, std::int16_t* samples);

} // namespace G7221Synthesis
