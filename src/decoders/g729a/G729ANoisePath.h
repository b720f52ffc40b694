#pragma once

#include "src/decoders/g729a/G729A.h"

/** The decoding of a frame without speech: comfort noise (ITU-T G.729 Annex B, clause B.4). */
namespace G729ANoisePath {

/** Makes the excitation and the synthesis of both subframes. */
void decode(G729AState& state, G729AFrameModel& model);

/** Returns the SID gain's index, 0 to 31, for an energy mantissa x 2^exponent (Qua_Sidgain, one frame). */
int gainIndex(std::int16_t mantissa, std::int16_t exponent);

} // namespace G729ANoisePath
