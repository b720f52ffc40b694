#pragma once

#include "src/decoders/g729a/G729A.h"

/** The path of a speech frame, good or erased. */
namespace G729ASpeechPath {

/** Excitation and synthesis of both subframes. */
void decode(G729AState& state, G729AFrameModel& model);

} // namespace G729ASpeechPath
