#include "src/decoders/g729a/G729APostFilter.h"

#include "src/decoders/g729a/G729AMath.h"
#include "src/decoders/g729a/G729ASynthesis.h"

#include <algorithm>
#include <cstring>

using G729AMath::wrap32;

namespace G729APostFilter {

namespace {

constexpr std::int16_t numeratorGamma = 18022;   // 0.55, Q15
constexpr std::int16_t denominatorGamma = 22938; // 0.7, Q15
constexpr int delays = 7;
constexpr int impulseResponse = 22;
constexpr std::uint32_t maxEnergy = 0x40000000;
constexpr int half = 0x8000;

/** The residual of the synthesis under the weighted filter, and a quarter of it. */
void residual(const G729AFilter& a, const std::int16_t* x, std::int16_t* res, std::int16_t* scaled)
{
    std::uint32_t sum[G729ASubframeSamples];
    std::fill_n(sum, G729ASubframeSamples, 2048U);
    for (int j = 0; j <= G729AOrder; ++j) {
        for (int n = 0; n < G729ASubframeSamples; ++n) {
            sum[n] += static_cast<std::uint32_t>(a[j] * x[n - j]);
        }
    }
    for (int n = 0; n < G729ASubframeSamples; ++n) {
        res[n] = wrap16(static_cast<std::int32_t>(sum[n]) >> 12);
        scaled[n] = static_cast<std::int16_t>(res[n] >> 2);
    }
}

std::int32_t doubled(std::int32_t value)
{
    return G729AMath::shift(value, 1);
}

/** The pitch filter, or a copy of the residual. @param res,scaled this subframe's, history before them */
void longTermFilter(const std::int16_t* res, const std::int16_t* scaled, int lag, std::int16_t* out)
{
    const int shortest = shortestDelay(lag);
    int best = shortest;
    std::int32_t correlation = G729AMath::dot(scaled, scaled - shortest, G729ASubframeSamples);
    for (int delay = shortest + 1; delay < shortest + delays; ++delay) {
        const std::int32_t tried = G729AMath::dot(scaled, scaled - delay, G729ASubframeSamples);
        if (tried > correlation) {
            correlation = tried;
            best = delay;
        }
    }
    const auto energyAt = [scaled](int delay) {
        // Deliberate: the Recommendation adds the one after the doubling.
        return doubled(wrap32(1LL + G729AMath::energy(scaled - delay, G729ASubframeSamples)));
    };
    const LongTermGains gains = longTermGains(std::max(doubled(correlation), 0), energyAt(best), energyAt(0));
    if (gains.delayed == 0 && gains.now == 0) {
        std::copy_n(res, G729ASubframeSamples, out);
        return;
    }
    for (int n = 0; n < G729ASubframeSamples; ++n) {
        out[n] = wrap16(((gains.now * res[n]) >> 15) + ((gains.delayed * res[n - best]) >> 15));
    }
}

/** Takes the tilt out, backwards, so that each sample still meets the one before it as it was. */
void compensateTilt(int coefficient, std::int16_t& memory, std::int16_t* samples)
{
    const std::int16_t last = samples[G729ASubframeSamples - 1];
    for (int n = G729ASubframeSamples - 1; n > 0; --n) {
        samples[n] = wrap16(samples[n] - ((coefficient * samples[n - 1]) >> 15));
    }
    samples[0] = wrap16(samples[0] - ((coefficient * memory) >> 15));
    memory = last;
}

/** The energy of a quarter of the samples; exact, where it may go beyond what counts. */
std::uint32_t quarterEnergy(const std::int16_t* samples)
{
    std::uint32_t sum = 0;
    for (int n = 0; n < G729ASubframeSamples; ++n) {
        const int quarter = samples[n] >> 2;
        sum += static_cast<std::uint32_t>(quarter * quarter);
    }
    return sum;
}

void controlGain(G729APostFilterState& state, const std::int16_t* input, std::int16_t* samples)
{
    const std::uint32_t output = quarterEnergy(samples);
    if (output == 0) {
        state.pastGain = 0;
        return;
    }
    const int step = gainStep(quarterEnergy(input), output);
    for (int n = 0; n < G729ASubframeSamples; ++n) {
        state.pastGain = wrap16(((state.pastGain * 29491) >> 15) + step); // 0.9, Q15
        samples[n] = wrap16((samples[n] * state.pastGain) >> 12);
    }
}

void shiftHistory(std::int16_t* buffer)
{
    std::memmove(buffer, buffer + G729ASubframeSamples, G729AResidualPast * sizeof(std::int16_t));
}

/** @param x the subframe's synthesis, history before it */
void filterSubframe(G729APostFilterState& state, const G729AFilter& a, int lag, bool voiced,
                    const std::int16_t* x, std::int16_t* out)
{
    G729AFilter numerator;
    G729AFilter denominator;
    weight(a, numeratorGamma, numerator);
    weight(a, denominatorGamma, denominator);
    std::int16_t* res = state.res2Buffer + G729AResidualPast;
    std::int16_t* scaled = state.scaledRes2Buffer + G729AResidualPast;
    residual(numerator, x, res, scaled);
    std::int16_t pitched[G729ASubframeSamples];
    if (voiced) {
        longTermFilter(res, scaled, lag, pitched);
    } else {
        std::copy_n(res, G729ASubframeSamples, pitched);
    }
    compensateTilt(tilt(numerator, denominator), state.memPre, pitched);
    G729ASynthesis::filter(denominator, pitched, out, G729ASubframeSamples, state.memSynPst);
    std::copy_n(out + G729ASubframeSamples - G729AOrder, G729AOrder, state.memSynPst);
    controlGain(state, x, out);
    shiftHistory(state.res2Buffer);
    shiftHistory(state.scaledRes2Buffer);
}

} // namespace

void filterFrame(G729AState& state, const G729AFrameModel& model)
{
    for (int subframe = 0; subframe < G729ASubframes; ++subframe) {
        const int at = subframe * G729ASubframeSamples;
        filterSubframe(*state.postFilterState, model.filter[subframe], model.lag[subframe],
                       state.ftyp == G729ASpeech, state.synth + at, state.output + at);
    }
}

int shortestDelay(int lag)
{
    constexpr int reach = delays / 2;
    return lag + reach >= G729AResidualPast ? G729AResidualPast - delays : lag - reach;
}

void weight(const G729AFilter& a, std::int16_t gamma, G729AFilter& weighted)
{
    weighted[0] = a[0];
    int power = gamma;
    for (int i = 1; i <= G729AOrder; ++i) {
        weighted[i] = wrap16((a[i] * power + 16384) >> 15);
        power = (power * gamma + 16384) >> 15;
    }
}

LongTermGains longTermGains(std::int32_t correlation, std::int32_t delayed, std::int32_t now)
{
    const std::int32_t largest = std::max({correlation, delayed, now});
    const int doublings = largest > 0 ? G729AMath::norm(largest) : 0; // none is positive only after a wrap
    const auto top = [doublings](std::int32_t value) {
        return wrap32(std::int64_t{G729AMath::shift(value, doublings)} + half) >> 16;
    };
    const std::int32_t c = top(correlation);
    const std::int32_t d = top(delayed);
    if (2LL * c * c < static_cast<std::int64_t>(top(now)) * d) {
        return {0, 0};
    }
    if (c > d) {
        return {21845, 10923}; // two thirds, one third
    }
    const std::int32_t dividend = c >> 2;
    const std::int32_t divisor = dividend + (d >> 1);
    const int gain = divisor > 0 ? G729AMath::divide15(dividend, divisor) : 0;
    return {32767 - gain, gain};
}

int tilt(const G729AFilter& numerator, const G729AFilter& denominator)
{
    constexpr std::int16_t silence[G729AOrder] = {};
    std::int16_t response[impulseResponse] = {};
    std::copy_n(numerator, G729AOrder + 1, response);
    G729ASynthesis::filter(denominator, response, response, impulseResponse, silence);
    const std::int32_t r0 = G729AMath::energy(response, impulseResponse);
    const std::int32_t r1 = G729AMath::dot(response, response + 1, impulseResponse - 1);
    if (r1 < 1) {
        return 0;
    }
    return G729AMath::divide15(((r1 >> 15) * 26214) >> 15, r0 >> 15); // 0.8, Q15
}

int gainStep(std::uint32_t input, std::uint32_t output)
{
    if (input == 0) {
        return 0;
    }
    const auto normOfDouble = [](std::uint32_t energy) {
        return G729AMath::norm(static_cast<std::int32_t>(2 * energy));
    };
    std::int32_t outputTop = 16384;
    int outputExponent = -1;
    if (output < maxEnergy) {
        const int doublings = normOfDouble(output);
        outputExponent = doublings - 1;
        outputTop = static_cast<std::int32_t>(((output << doublings) + half) >> 16);
    }
    std::int32_t inputTop = 32767;
    int inputExponent = 0;
    if (input < maxEnergy) {
        inputExponent = normOfDouble(input);
        inputTop = static_cast<std::int32_t>(((input << (inputExponent + 1)) + half) >> 16);
    }
    const std::int32_t ratio = G729AMath::shift(G729AMath::shift(G729AMath::divide15(outputTop, inputTop), 7),
                                                inputExponent - outputExponent);
    const std::int16_t root = wrap16((G729AMath::inverseSqrt(ratio) + 64) >> 7);
    return (root * 3276) >> 15;
}

} // namespace G729APostFilter
