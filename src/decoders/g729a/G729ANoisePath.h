#pragma once

#include "src/decoders/g729a/G729A.h"

/** The path of a frame without speech: comfort noise (ITU-T G.729 Annex B, clause B.4). */
namespace G729ANoisePath {

/** Excitation and synthesis of both subframes. */
void decode(G729AState& state, G729AFrameModel& model);

/** The SID gain's index for an excitation energy mantissa x 2^exponent (Qua_Sidgain, one frame); 0 to 31. */
int gainIndex(std::int16_t mantissa, std::int16_t exponent);

} // namespace G729ANoisePath
