#pragma once

#include "src/decoders/g729a/G729A.h"

/** The gains of the two codebooks (ITU-T G.729, clauses 3.9, 4.1.5 and 4.4.2). */
namespace G729AGains {

/** Gains of a subframe. @param index 7 bits @param code the sharpened code, 40 samples */
void decode(G729AState& state, int index, const std::int16_t* code);

/** An erased subframe's: the last ones, attenuated. */
void attenuate(G729AState& state);

/** Keeps the energy of a good frame's excitation, from which an unannounced noise takes its gain. */
void saveEnergy(G729AState& state);

} // namespace G729AGains
