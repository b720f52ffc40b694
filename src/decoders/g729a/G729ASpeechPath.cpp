#include "src/decoders/g729a/G729ASpeechPath.h"

#include "src/decoders/g729a/G729AFixedCodebook.h"
#include "src/decoders/g729a/G729AFrameBits.h"
#include "src/decoders/g729a/G729AGains.h"
#include "src/decoders/g729a/G729ALsp.h"
#include "src/decoders/g729a/G729AMath.h"
#include "src/decoders/g729a/G729APitch.h"
#include "src/decoders/g729a/G729ASynthesis.h"

#include <algorithm>

namespace G729ASpeechPath {

namespace {

constexpr std::int16_t noiseSeed = 11111; // Annex B
constexpr std::int16_t maxLag = 143;
constexpr std::int16_t maxSharp = 13017; // 0.7945, Q14

void decodeFilters(G729AState& state, G729AFrameModel& model)
{
    if (state.bfi + state.badLsf != 0) {
        G729ALsp::repeat(state);
    } else {
        G729ALsp::decode(state);
    }
    std::int16_t lsp[G729AOrder];
    G729ALsp::toLsp(state.prevLsf, lsp);
    G729ALsp::interpolate(state, lsp, model);
}

/** The lag of the frame before, one longer each time. */
G729APitch::Lag repeatLag(G729AState& state)
{
    const G729APitch::Lag lag{state.oldT0, 0};
    state.oldT0 = std::min(static_cast<std::int16_t>(state.oldT0 + 1), maxLag);
    return lag;
}

/** @param before the lag of the first subframe, for the second */
G729APitch::Lag decodeLag(G729AState& state, int subframe, int before)
{
    const bool first = subframe == 0;
    const bool badPitch = first && state.parm[G729AFrameBits::LagParity] != 0;
    if (state.bfi != 0 || badPitch) {
        return repeatLag(state);
    }
    const G729APitch::Lag lag = first ? G729APitch::firstLag(state.parm[G729AFrameBits::Lag1])
                                      : G729APitch::secondLag(state.parm[G729AFrameBits::Lag2], before);
    state.oldT0 = static_cast<std::int16_t>(lag.whole);
    return lag;
}

int drawConcealed(G729AState& state, int mask)
{
    state.seedFer = G729AMath::draw(state.seedFer);
    return state.seedFer & mask;
}

void decodeCode(G729AState& state, int subframe, std::int16_t* code)
{
    const int place = subframe * G729AFrameBits::PerSubframe;
    const bool bad = state.bfi != 0;
    const int index = bad ? drawConcealed(state, 0x1FFF) : state.parm[G729AFrameBits::Code1 + place];
    const int signs = bad ? drawConcealed(state, 15) : state.parm[G729AFrameBits::Sign1 + place];
    G729AFixedCodebook::decode(index, signs, code);
}

void decodeGains(G729AState& state, int subframe, const std::int16_t* code)
{
    if (state.bfi != 0) {
        G729AGains::attenuate(state);
    } else {
        G729AGains::decode(state, state.parm[G729AFrameBits::Gain1 + subframe * G729AFrameBits::PerSubframe],
                           code);
    }
    state.sharp = std::clamp(state.gainPitch, G729AMinSharp, maxSharp);
}

void mixExcitation(const G729AState& state, const std::int16_t* code, std::int16_t* exc)
{
    for (int n = 0; n < G729ASubframeSamples; ++n) {
        const std::int32_t sum = exc[n] * state.gainPitch + code[n] * state.gainCode;
        exc[n] = G729AMath::clamp16((sum + 8192) >> 14);
    }
}

} // namespace

void decode(G729AState& state, G729AFrameModel& model)
{
    state.noiseTable[G729ANoiseWords - 1] = noiseSeed;
    decodeFilters(state, model);
    for (int subframe = 0; subframe < G729ASubframes; ++subframe) {
        std::int16_t* exc = state.exc + subframe * G729ASubframeSamples;
        const G729APitch::Lag lag = decodeLag(state, subframe, model.lag[0]);
        model.lag[subframe] = lag.whole;
        G729APitch::adaptiveCodebook(exc, lag, G729APitch::Guard::FirstTaps);
        std::int16_t code[G729ASubframeSamples];
        decodeCode(state, subframe, code);
        G729AFixedCodebook::sharpen(code, lag.whole, state.sharp);
        decodeGains(state, subframe, code);
        mixExcitation(state, code, exc);
        G729ASynthesis::synthesise(state, model.filter[subframe], subframe, G729ASynthesis::Rescue::Speech);
    }
}

} // namespace G729ASpeechPath
