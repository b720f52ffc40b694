#include "src/decoders/g729a/G729ASynthesis.h"

#include "src/decoders/g729a/G729AMath.h"

#include <algorithm>
#include <iterator>

namespace G729ASynthesis {

namespace {

constexpr int spared = 2; // samples at the end of oldExc that the rescue of speech leaves

} // namespace

bool filter(const G729AFilter& a, const std::int16_t* input, std::int16_t* output, int count,
            const std::int16_t* memory, Overflow overflow)
{
    // The outputs behind their memory; 16-bit values kept in wide words, which the processor reloads faster.
    std::int32_t y[G729AOrder + G729ASubframeSamples];
    std::copy_n(memory, G729AOrder, y);
    bool clamped = false;
    for (int n = 0; n < count; ++n) {
        const std::int32_t* now = y + G729AOrder + n;
        std::uint32_t sum = 2048U + static_cast<std::uint32_t>(input[n] * 4096);
        for (int j = G729AOrder; j >= 1; --j) {
            sum -= static_cast<std::uint32_t>(a[j] * now[-j]);
        }
        const std::int32_t sample = static_cast<std::int32_t>(sum) >> 12;
        const std::int16_t kept = overflow == Overflow::Clamp ? G729AMath::clamp16(sample) : wrap16(sample);
        clamped = clamped || (overflow == Overflow::Clamp && kept != sample);
        y[G729AOrder + n] = kept;
        output[n] = kept;
    }
    return clamped;
}

void synthesise(G729AState& state, const G729AFilter& a, int subframe, Rescue rescue)
{
    const std::int16_t* exc = state.exc + subframe * G729ASubframeSamples;
    std::int16_t* synth = state.synth + subframe * G729ASubframeSamples;
    if (filter(a, exc, synth, G729ASubframeSamples, state.memSyn)) {
        const bool isNoise = rescue == Rescue::Noise;
        for (std::int16_t* sample = state.oldExc; sample != std::end(state.oldExc) - (isNoise ? 0 : spared);
             ++sample) {
            *sample = static_cast<std::int16_t>(*sample >> 2);
        }
        filter(a, exc, synth, G729ASubframeSamples, state.memSyn, isNoise ? Overflow::Wrap : Overflow::Clamp);
    }
    std::copy_n(synth + G729ASubframeSamples - G729AOrder, G729AOrder, state.memSyn);
}

} // namespace G729ASynthesis
