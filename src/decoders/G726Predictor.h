#pragma once

#include "src/decoders/G726State.h"
#include "src/decoders/Integer.h"

/** The parts of a G.726 step that are the same at all rates (ITU-T G.726). */
namespace G726 {

/** Returns the product of a predictor coefficient and a history word in floating format (FMULT,
 * clause 4.2.6). */
inline std::int32_t floatingProduct(std::int32_t an, std::int32_t srn)
{
    const auto magnitude = static_cast<std::uint32_t>(an > 0 ? an : -an & 0x1FFF);
    const int exponent = topBitIndex(magnitude) - 5;
    const std::uint32_t mantissa = magnitude == 0  ? 32
                                   : exponent >= 0 ? magnitude >> exponent
                                                   : magnitude << -exponent;
    const int productExponent = exponent + (srn >> 6 & 15) - 13;
    const std::uint32_t productMantissa = (mantissa * static_cast<std::uint32_t>(srn & 63) + 48U) >> 4U;
    const auto product =
        static_cast<std::int32_t>(productExponent >= 0 ? productMantissa << productExponent & 0x7FFFU
                                                       : productMantissa >> -productExponent);
    return (an ^ srn) < 0 ? -product : product;
}

/** Returns the signal estimate of the zeros, doubled (SEZI). */
inline std::int16_t zeroEstimate(const G726State& state)
{
    std::int32_t sum = 0;
    for (int i = 0; i < 6; ++i) {
        sum += floatingProduct(state.b[i] >> 2, state.dq[i]);
    }
    return wrap16(sum);
}

/** Returns the signal estimate of zeros and poles, doubled (SEI). */
inline std::int16_t wholeEstimate(const G726State& state, std::int16_t zeros)
{
    return wrap16(zeros + floatingProduct(state.a[1] >> 2, state.sr[1]) +
                  floatingProduct(state.a[0] >> 2, state.sr[0]));
}

/** Returns the quantizer's scale factor (MIX, clause 4.2.4). */
inline std::int32_t stepSize(const G726State& state)
{
    if (state.ap >= 256) {
        return state.yu;
    }
    const std::int32_t y = state.yl >> 6;
    const std::int32_t difference = state.yu - y;
    const std::int32_t al = state.ap >> 2;
    return y + ((difference * al + (difference < 0 ? 63 : 0)) >> 6);
}

/** Returns a difference from its logarithm (ANTILOG, ADDA); a negative one as magnitude - 0x8000. */
inline std::int32_t reconstruct(std::int32_t dqln, std::int32_t y, bool negative)
{
    const std::int32_t dql = wrap16(dqln + (y >> 2));
    std::int32_t magnitude = 0;
    if (dql >= 0) {
        const std::int32_t exponent = dql >> 7 & 15;
        magnitude = (128 + (dql & 127)) << 7 >> (14 - exponent);
    }
    return wrap16(negative ? magnitude - 32768 : magnitude);
}

/**
 * Adapts the state to a sample (clauses 4.2.3 to 4.2.8).
 *
 * @param state     of the coder
 * @param y         step size
 * @param wi        the code's entry in W
 * @param fi        the code's entry in F
 * @param dq        difference, as reconstruct returns it
 * @param sr        reconstructed signal
 * @param dqsez     sign of the partial signal
 * @param leakShift of the zero predictor
 */
void update(G726State& state, std::int32_t y, std::int32_t wi, std::int32_t fi, std::int32_t dq,
            std::int32_t sr, std::int32_t dqsez, int leakShift);

} // namespace G726
