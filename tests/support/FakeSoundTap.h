#pragma once

#include "platform/SoundTap.h"

/** Takes the WAV header library's place in a test program. */
namespace FakeSoundTap {

/** What SoundTap_GetWAVInfo answers from now on. */
void answer(std::int32_t result, std::uint32_t sampleRate, std::uint32_t dataBegin, std::uint32_t dataEnd);

/** The block as the last call handed it in; the path is not valid any more. */
SoundTapWavInfo lastRequest();

} // namespace FakeSoundTap
