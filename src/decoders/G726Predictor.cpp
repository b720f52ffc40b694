#include "src/decoders/G726Predictor.h"

#include <algorithm>
#include <cstdlib>

namespace {

constexpr std::int16_t positiveZero = 0x20; // floating format
constexpr std::int16_t negativeZero = wrap16(0xFC20);
constexpr std::int32_t signOffset = 0x400;
constexpr std::int32_t leastYu = 544;
constexpr std::int32_t maxYu = 5120;
constexpr std::int32_t toneThreshold = -11776; // of the second pole coefficient

/** A magnitude in floating format: exponent and six bits of mantissa. */
std::int16_t floating(std::int32_t magnitude, bool negative)
{
    const int exponent = topBitIndex(static_cast<std::uint32_t>(magnitude)) + 1;
    const std::int32_t word = (exponent << 6) + ((magnitude << 6) >> exponent);
    return wrap16(negative ? word - signOffset : word);
}

/** Whether a tone ends here (TRANS). */
bool isTransition(const G726State& state, std::int32_t magnitude)
{
    const std::int32_t integral = state.yl >> 15;
    const std::int32_t fraction = state.yl >> 10 & 31;
    const std::int32_t threshold = integral > 9 ? 31 << 10 : (32 + fraction) << integral;
    return state.td != 0 && magnitude > (threshold + (threshold >> 1)) >> 1;
}

/** The second pole coefficient (UPA2, LIMC). */
std::int32_t secondPole(const G726State& state, std::int32_t dqsez, std::int32_t pk0, std::int32_t pks1)
{
    std::int32_t a2p = state.a[1] - (state.a[1] >> 7);
    if (dqsez == 0) {
        return a2p;
    }
    const std::int32_t fa1 = pks1 != 0 ? state.a[0] : -state.a[0];
    if (fa1 < -8191) {
        a2p -= 256;
    } else if (fa1 > 8191) {
        a2p += 255;
    } else {
        a2p += fa1 >> 5;
    }
    if (pk0 != state.pk[1]) {
        return a2p <= -12160 ? -12288 : a2p >= 12416 ? 12288 : a2p - 128;
    }
    return a2p <= -12416 ? -12288 : a2p >= 12160 ? 12288 : a2p + 128;
}

/** The first pole coefficient (UPA1, LIMD). */
std::int16_t firstPole(std::int16_t a1, std::int32_t a2p, std::int32_t dqsez, std::int32_t pks1)
{
    std::int32_t made = wrap16(a1 - (a1 >> 8));
    if (dqsez != 0) {
        made = wrap16(made + (pks1 == 0 ? 192 : -192));
    }
    const std::int32_t limit = 15360 - a2p;
    return wrap16(std::clamp(made, -limit, limit));
}

/** The zero coefficients (UPB). */
void updateZeros(G726State& state, std::int32_t dq, std::int32_t magnitude, int leakShift)
{
    for (int i = 0; i < 6; ++i) {
        std::int32_t made = state.b[i] - (state.b[i] >> leakShift);
        if (magnitude != 0) {
            made += (dq ^ state.dq[i]) >= 0 ? 128 : -128;
        }
        state.b[i] = wrap16(made);
    }
}

/** The newest words of the histories (FLOATA, FLOATB). */
void shiftHistories(G726State& state, std::int32_t dq, std::int32_t magnitude, std::int32_t sr)
{
    std::copy_backward(state.dq, state.dq + 5, state.dq + 6);
    if (magnitude == 0) {
        state.dq[0] = dq >= 0 ? positiveZero : negativeZero;
    } else {
        state.dq[0] = floating(magnitude, dq < 0);
    }
    state.sr[1] = state.sr[0];
    if (sr == 0) {
        state.sr[0] = positiveZero;
    } else if (sr == -32768) {
        state.sr[0] = negativeZero;
    } else {
        state.sr[0] = floating(std::abs(sr), sr < 0);
    }
}

} // namespace

void G726::update(G726State& state, std::int32_t y, std::int32_t wi, std::int32_t fi, std::int32_t dq,
                  std::int32_t sr, std::int32_t dqsez, int leakShift)
{
    const std::int32_t pk0 = dqsez < 0 ? 1 : 0;
    const std::int32_t magnitude = dq & 0x7FFF;
    const bool transition = isTransition(state, magnitude);

    // Scale factors (FILTD, LIMB, FILTE).
    state.yu = static_cast<std::int16_t>(std::clamp(y + ((wi - y) >> 5), leastYu, maxYu));
    state.yl += state.yu + (-state.yl >> 6);

    // Predictor.
    std::int32_t a2p = 0;
    if (transition) {
        std::fill(state.a, state.a + 2, std::int16_t{0});
        std::fill(state.b, state.b + 6, std::int16_t{0});
    } else {
        const std::int32_t pks1 = pk0 ^ state.pk[0];
        a2p = secondPole(state, dqsez, pk0, pks1);
        state.a[1] = wrap16(a2p);
        state.a[0] = firstPole(state.a[0], a2p, dqsez, pks1);
        updateZeros(state, dq, magnitude, leakShift);
    }
    shiftHistories(state, dq, magnitude, sr);
    state.pk[1] = state.pk[0];
    state.pk[0] = static_cast<std::int16_t>(pk0);

    // Tone (TONE) and speed control (FILTA, FILTB, FILTC, SUBTC).
    state.td = !transition && a2p < toneThreshold ? 1 : 0;
    state.dms = wrap16(state.dms + ((fi - state.dms) >> 5));
    state.dml = wrap16(state.dml + ((wrap16(fi << 2) - state.dml) >> 7));
    if (transition) {
        state.ap = 256;
    } else if (y >= 1536 && a2p >= toneThreshold && std::abs(4 * state.dms - state.dml) < state.dml >> 3) {
        state.ap = wrap16(state.ap + (-state.ap >> 4));
    } else {
        state.ap = wrap16(state.ap + ((512 - state.ap) >> 4));
    }
}
