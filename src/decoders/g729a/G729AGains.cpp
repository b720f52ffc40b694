#include "src/decoders/g729a/G729AGains.h"

#include "src/decoders/g729a/G729AMath.h"
#include "src/decoders/g729a/G729ATables.h"

#include <algorithm>
#include <numeric>

using G729AMath::wrap32;

namespace G729AGains {

namespace {

constexpr std::int16_t highestPitchGain = 29491; // 1.8 in Q14; 0.9 in Q15
constexpr std::int16_t lowestEnergy = -14336;    // dB, Q10

/** The code gain that the energies so far predict: mantissa x 2^(exponent - 14). */
struct PredictedGain
{
    std::int32_t mantissa;
    int exponent;
};

PredictedGain predict(const G729AState& state, const std::int16_t* code)
{
    const std::int32_t energy = wrap32(2LL * G729AMath::energy(code, G729ASubframeSamples));
    const G729AMath::Logarithm log = G729AMath::log2(energy);
    constexpr std::int32_t decibels = -24660; // -10 log10(2), Q13
    const std::int32_t mean =
        2 * (log.exponent * decibels + ((log.fraction * decibels) >> 15)) + 32588 * 64; // dB, Q14
    std::int64_t sum = mean * 1024LL;
    for (int k = 0; k < G729APredictors; ++k) {
        sum += 2LL * G729ATables::gainPrediction[k] * state.pastQuaEn[k];
    }
    const std::int32_t gain = wrap32(sum) >> 16;   // dB, Q8
    const std::int32_t power = (gain * 5439) >> 7; // of two, Q16
    return {G729AMath::pow2of14((power & 0xFFFF) >> 1), power >> 16};
}

void pushEnergy(G729AState& state, std::int32_t energy)
{
    std::copy_backward(state.pastQuaEn, state.pastQuaEn + G729APredictors - 1,
                       state.pastQuaEn + G729APredictors);
    state.pastQuaEn[0] = wrap16(energy);
}

} // namespace

void decode(G729AState& state, int index, const std::int16_t* code)
{
    const std::int16_t* first = G729ATables::gbk1[G729ATables::imap1[index >> 4]];
    const std::int16_t* second = G729ATables::gbk2[G729ATables::imap2[index & 15]];
    state.gainPitch = wrap16(first[0] + second[0]);
    const std::int32_t correction = first[1] + second[1]; // Q13, beyond 16 bits
    const PredictedGain predicted = predict(state, code);
    const std::int32_t gain = (correction >> 1) * predicted.mantissa * 2;
    state.gainCode = wrap16(G729AMath::shift(gain, predicted.exponent - 10) >> 16);

    const G729AMath::Logarithm log = G729AMath::log2(correction);
    const std::int32_t power = ((log.exponent - 13) * 65536 + 2 * log.fraction) >> 3; // Q13
    pushEnergy(state, (power * 24660) >> 15);
}

void attenuate(G729AState& state)
{
    state.gainPitch = std::min(wrap16((state.gainPitch * highestPitchGain) >> 15), highestPitchGain);
    state.gainCode = wrap16((state.gainCode * 32111) >> 15); // 0.98
    const int sum = std::accumulate(state.pastQuaEn, state.pastQuaEn + G729APredictors, 0);
    pushEnergy(state, std::max<std::int32_t>((sum >> 2) - 4096, lowestEnergy));
}

void saveEnergy(G729AState& state)
{
    std::int32_t sum = G729AMath::energy(state.exc, G729AFrameSamples);
    if (sum == 0) {
        state.sidSav = 0; // deliberate: the exponent stays
        return;
    }
    std::int16_t exponent = 16;
    // A sum that wrapped is negative, or comes to 0 here.
    while (sum < 0x20000000 && sum != 0) {
        sum = G729AMath::shift(sum, 1);
        --exponent;
    }
    state.sidSav = wrap16(wrap32(sum + 16384LL) >> 15);
    state.shSidSav = exponent;
}

} // namespace G729AGains
