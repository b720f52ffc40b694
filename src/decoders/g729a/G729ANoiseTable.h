#pragma once

#include "src/decoders/g729a/G729A.h"

/** The random words of the comfort noise, which are drawn before they are needed. */
namespace G729ANoiseTable {

/** Draws the table of a new decoder. */
void fill(G729AState& state);

/** Draws the words that follow the last one. */
void renew(G729AState& state);

} // namespace G729ANoiseTable
