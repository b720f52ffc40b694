#pragma once

#include "src/decoders/g7221/G7221.h"

/** The inverse modulated lapped transform, from coefficients to samples (ITU-T G.722.1, clause 4.7). */
namespace G7221Synthesis {

/** Transforms the state's coefficients and adds the overlap into its output. */
void CoefsToSamples(G7221State& state);

/** Computes a type IV discrete cosine transform of 320 values; the two arrays do not overlap. */
void DctTypeIV(const std::int16_t* coefs, std::int16_t* samples);

} // namespace G7221Synthesis
