#pragma once

#include "src/decoders/g729a/G729A.h"

/** The gains of the two codebooks (ITU-T G.729, clauses 3.9, 4.1.5 and 4.4.2). */
namespace G729AGains {

/** Decodes the gains of a subframe from an index of 7 bits; @p code is the sharpened code, 40 samples. */
void decode(G729AState& state, int index, const std::int16_t* code);

/** Sets the gains of an erased subframe: the last ones, attenuated. */
void attenuate(G729AState& state);

/** Stores the energy of a good frame's excitation, the source of the gain of noise without a SID frame. */
void saveEnergy(G729AState& state);

} // namespace G729AGains
