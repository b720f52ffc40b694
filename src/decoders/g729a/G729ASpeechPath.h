#pragma once

#include "src/decoders/g729a/G729A.h"

/** The decoding of a speech frame, good or erased. */
namespace G729ASpeechPath {

/** Makes the excitation and the synthesis of both subframes. */
void decode(G729AState& state, G729AFrameModel& model);

} // namespace G729ASpeechPath
