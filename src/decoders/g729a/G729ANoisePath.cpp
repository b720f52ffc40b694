#include "src/decoders/g729a/G729ANoisePath.h"

#include "src/decoders/g729a/G729AFrameBits.h"
#include "src/decoders/g729a/G729ALsp.h"
#include "src/decoders/g729a/G729AMath.h"
#include "src/decoders/g729a/G729ANoiseExcitation.h"
#include "src/decoders/g729a/G729ASynthesis.h"
#include "src/decoders/g729a/G729ATables.h"

#include <algorithm>

namespace G729ANoisePath {

namespace {

constexpr std::int16_t initialSharp = 3277; // 0.2, Q14

void updateGain(G729AState& state)
{
    G729ANoiseState& noise = *state.noiseState;
    const bool afterSpeech = state.pastFtyp == G729ASpeech;
    if (state.ftyp == G729ASid) {
        G729ALsp::decodeSid(state);
        noise.sidGain = G729ATables::tabSidgain[state.parm[G729AFrameBits::SidGain]];
    } else if (afterSpeech) {
        noise.sidGain = G729ATables::tabSidgain[gainIndex(state.sidSav, state.shSidSav)];
    }
    // Deliberate: the two terms are rounded each on its own.
    noise.curGain =
        afterSpeech ? noise.sidGain : wrap16(((noise.curGain * 7 + 4) >> 3) + ((noise.sidGain + 4) >> 3));
}

} // namespace

int gainIndex(std::int16_t mantissa, std::int16_t exponent)
{
    const std::int32_t energy = G729AMath::multiplyLong(G729AMath::shift(mantissa, exponent), 410);
    const G729AMath::Logarithm log = G729AMath::log2(energy);
    const std::int32_t level = 1024 * log.exponent + ((1024 * log.fraction + 16384) >> 15);
    if (level <= -2721) {
        return 0;
    }
    if (level > 22111) {
        return 31;
    }
    if (level <= 4762) {
        return std::max(((level + 3401) * 24) >> 15, 1);
    }
    return std::max(((((level - 340) * 193) >> 15) >> 2) - 1, 6);
}

void decode(G729AState& state, G729AFrameModel& model)
{
    updateGain(state);
    for (int subframe = 0; subframe < G729ASubframes; ++subframe) {
        G729ANoiseExcitation::make(state.exc + subframe * G729ASubframeSamples,
                                   state.noiseTable + subframe * G729ANoiseExcitation::words,
                                   state.noiseState->curGain);
    }
    G729ALsp::interpolate(state, state.noiseState->lspSid, model);
    for (int subframe = 0; subframe < G729ASubframes; ++subframe) {
        G729ASynthesis::synthesise(state, model.filter[subframe], subframe, G729ASynthesis::Rescue::Noise);
        model.lag[subframe] = state.oldT0;
    }
    state.sharp = initialSharp;
}

} // namespace G729ANoisePath
