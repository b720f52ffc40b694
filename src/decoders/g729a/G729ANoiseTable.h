#pragma once

#include "src/decoders/g729a/G729A.h"

/** The random words of the comfort noise, drawn ahead so that nothing waits for a seed. */
namespace G729ANoiseTable {

/** The table of a new decoder. */
void fill(G729AState& state);

/** The draws that follow the last word. */
void renew(G729AState& state);

} // namespace G729ANoiseTable
