#pragma once

#include "src/decoders/g729a/G729A.h"

/** The high-pass at 100 Hz after the decoder, which also doubles the level (ITU-T G.729, clause 4.2.5). */
namespace G729AHighPass {

/** Filters the frame in the output in place. */
void filterFrame(G729AState& state);

} // namespace G729AHighPass
