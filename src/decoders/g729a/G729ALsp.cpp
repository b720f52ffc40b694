#include "src/decoders/g729a/G729ALsp.h"

#include "src/decoders/g729a/G729AFrameBits.h"
#include "src/decoders/g729a/G729AMath.h"
#include "src/decoders/g729a/G729ATables.h"

#include <algorithm>
#include <cstring>
#include <utility>

using G729AMath::wrap32;

namespace G729ALsp {

namespace {

constexpr int half = G729AOrder / 2;
constexpr int lowest = 40;     // Q13, 0.005
constexpr int highest = 25681; // Q13, 3.135
constexpr int minGap = 321;    // Q13, 0.0391
constexpr int sidGap = 10;

using Taps = std::int16_t[G729APredictors][G729AOrder];

/** Moves neighbours apart that are closer than a gap (Lsp_expand). */
void expand(std::int16_t* vector, int gap)
{
    for (int j = 1; j < G729AOrder; ++j) {
        const int apart = (vector[j - 1] - vector[j] + gap) >> 1;
        if (apart > 0) {
            vector[j - 1] = wrap16(vector[j - 1] - apart);
            vector[j] = wrap16(vector[j] + apart);
        }
    }
}

/** What the history predicts of coefficient j, Q28. */
std::int64_t prediction(const G729AState& state, const Taps& taps, int j)
{
    std::int64_t sum = 0;
    for (int k = 0; k < G729APredictors; ++k) {
        sum += state.freqPrev[k][j] * taps[k][j];
    }
    return sum;
}

void compose(const G729AState& state, const std::int16_t* vector, const Taps& taps, const std::int16_t* rest,
             std::int16_t* lsf)
{
    for (int j = 0; j < G729AOrder; ++j) {
        lsf[j] = wrap16(wrap32(vector[j] * rest[j] + prediction(state, taps, j)) >> 15);
    }
}

void pushHistory(G729AState& state, const std::int16_t* vector)
{
    std::memmove(state.freqPrev[1], state.freqPrev[0], sizeof state.freqPrev - sizeof state.freqPrev[0]);
    std::copy_n(vector, G729AOrder, state.freqPrev[0]);
}

/** One of the two polynomials of half the LSP, Q24. @param lsp the first; every second one counts */
void polynomial(const std::int16_t* lsp, std::int32_t* f)
{
    f[0] = 1 << 24;
    f[1] = lsp[0] * -1024;
    for (int i = 2; i <= half; ++i) {
        const std::int16_t q = lsp[2 * (i - 1)];
        f[i] = f[i - 2];
        for (int k = i; k >= 2; --k) {
            f[k] = wrap32(static_cast<std::int64_t>(f[k]) + f[k - 2] -
                          2LL * G729AMath::multiplyLong(f[k - 1], q));
        }
        f[1] = wrap32(f[1] - 1024LL * q);
    }
}

} // namespace

void stabilise(std::int16_t* lsf)
{
    for (int j = 0; j < G729AOrder - 1; ++j) {
        if (lsf[j + 1] < lsf[j]) {
            std::swap(lsf[j], lsf[j + 1]);
        }
    }
    lsf[0] = std::max<std::int16_t>(lsf[0], lowest);
    for (int j = 0; j < G729AOrder - 1; ++j) {
        if (lsf[j + 1] - lsf[j] < minGap) {
            lsf[j + 1] = wrap16(lsf[j] + minGap);
        }
    }
    lsf[G729AOrder - 1] = std::min<std::int16_t>(lsf[G729AOrder - 1], highest);
}

void decode(G729AState& state)
{
    const int first = state.parm[G729AFrameBits::LspFirst];
    const int second = state.parm[G729AFrameBits::LspSecond];
    const int ma = (first >> 7) & 1;
    const std::int16_t* base = G729ATables::lspcb1[first & 127];
    const std::int16_t* low = G729ATables::lspcb2[(second >> 5) & 31];
    const std::int16_t* high = G729ATables::lspcb2[second & 31];
    std::int16_t vector[G729AOrder];
    for (int j = 0; j < G729AOrder; ++j) {
        vector[j] = wrap16(base[j] + (j < half ? low : high)[j]);
    }
    expand(vector, 10);
    expand(vector, 5);
    compose(state, vector, G729ATables::fg[ma], G729ATables::fgSum[ma], state.prevLsf);
    pushHistory(state, vector);
    stabilise(state.prevLsf);
    state.prevMa = static_cast<std::int16_t>(ma);
}

void repeat(G729AState& state)
{
    std::int16_t vector[G729AOrder];
    for (int j = 0; j < G729AOrder; ++j) {
        const std::int64_t predicted = prediction(state, G729ATables::fg[state.prevMa], j);
        const std::int32_t rest = wrap32(state.prevLsf[j] * 32768LL - predicted) >> 15;
        const std::int64_t scaled = static_cast<std::int64_t>(rest) * G729ATables::fgSumInv[state.prevMa][j];
        vector[j] = wrap16(wrap32(scaled) >> 12);
    }
    pushHistory(state, vector);
}

void decodeSid(G729AState& state)
{
    const int ma = state.parm[G729AFrameBits::SidSwitch];
    const int second = state.parm[G729AFrameBits::SidSecond];
    const std::int16_t* base =
        G729ATables::lspcb1[G729ATables::PtrTab_1[state.parm[G729AFrameBits::SidFirst]]];
    std::int16_t vector[G729AOrder];
    for (int j = 0; j < G729AOrder; ++j) {
        vector[j] = wrap16(base[j] + G729ATables::lspcb2[G729ATables::PtrTab_2[j < half ? 0 : 1][second]][j]);
    }
    expand(vector, sidGap);
    std::int16_t lsf[G729AOrder];
    compose(state, vector, state.noiseFg[ma], G729ATables::noiseFgSum[ma], lsf);
    pushHistory(state, vector);
    stabilise(lsf);
    toLsp(lsf, state.noiseState->lspSid);
}

void toLsp(const std::int16_t* lsf, std::int16_t* lsp)
{
    for (int j = 0; j < G729AOrder; ++j) {
        const int place = (lsf[j] * 20861) >> 15; // 2 / pi, Q15
        const int index = std::min(place >> 8, 63);
        // Below the table, where only broken history can lead, counts as 0.
        lsp[j] =
            index < 0
                ? static_cast<std::int16_t>(0)
                : wrap16(G729ATables::table2[index] + ((G729ATables::slope[index] * (place & 255)) >> 12));
    }
}

void toFilter(const std::int16_t* lsp, G729AFilter& filter)
{
    std::int32_t even[half + 1];
    std::int32_t odd[half + 1];
    polynomial(lsp, even);
    polynomial(lsp + 1, odd);
    for (int i = half; i >= 1; --i) {
        even[i] = wrap32(static_cast<std::int64_t>(even[i]) + even[i - 1]);
        odd[i] = wrap32(static_cast<std::int64_t>(odd[i]) - odd[i - 1]);
    }
    filter[0] = 4096;
    for (int i = 1; i <= half; ++i) {
        filter[i] = wrap16(wrap32(static_cast<std::int64_t>(even[i]) + odd[i] + 4096) >> 13);
        filter[G729AOrder + 1 - i] = wrap16(wrap32(static_cast<std::int64_t>(even[i]) - odd[i] + 4096) >> 13);
    }
}

void interpolate(G729AState& state, const std::int16_t* lsp, G729AFrameModel& model)
{
    std::int16_t between[G729AOrder];
    for (int j = 0; j < G729AOrder; ++j) {
        between[j] = static_cast<std::int16_t>((lsp[j] >> 1) + (state.lspOld[j] >> 1));
    }
    toFilter(between, model.filter[0]);
    toFilter(lsp, model.filter[1]);
    std::copy_n(lsp, G729AOrder, state.lspOld);
}

} // namespace G729ALsp
