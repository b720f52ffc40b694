#pragma once

#include "src/decoders/G726Predictor.h"
#include "src/decoders/G726Tables.h"
#include "src/decoders/G726Tandem.h"

/**
 * The coding of one sample (ITU-T G.726, clause 3).
 *
 * @tparam Rate one of the records of G726Tables.h
 */
template<class Rate>
struct G726Step
{
    static constexpr std::int32_t topCode = (1 << Rate::codeBits) - 1; ///< The largest code.
    static constexpr std::int32_t signBit = 1 << (Rate::codeBits - 1); ///< The sign in a code.

    /** Returns the code of a 14-bit sample. */
    static std::int32_t encode(G726State* state, std::int32_t sample)
    {
        const std::int16_t zeros = G726::zeroEstimate(*state);
        const std::int32_t se = G726::wholeEstimate(*state, zeros) >> 1;
        const std::int32_t y = G726::stepSize(*state);
        const std::int32_t code = quantize(sample - se, y);
        adapt(*state, code, zeros, se, y);
        return code;
    }

    /** Returns the sample of a code, in the form of the state's sampleCoding. */
    static std::int32_t decode(G726State* state, std::int32_t code)
    {
        code &= topCode;
        const std::int16_t zeros = G726::zeroEstimate(*state);
        const std::int32_t se = G726::wholeEstimate(*state, zeros) >> 1;
        const std::int32_t y = G726::stepSize(*state);
        const std::int32_t sr = adapt(*state, code, zeros, se, y);
        if (state->sampleCoding == G726Linear) {
            return wrap16(sr * 4); // deliberate: 14 bits put into the upper bits, cut, not clamped
        }
        return tandem(state->sampleCoding, sr, se, y, code);
    }

private:
    /** Reconstructs the signal and adapts the state to it. */
    static std::int32_t adapt(G726State& state, std::int32_t code, std::int16_t zeros, std::int32_t se,
                              std::int32_t y)
    {
        const auto index = static_cast<std::size_t>(code);
        const std::int32_t dq = G726::reconstruct(Rate::dqln[index], y, (code & signBit) != 0);
        const std::int32_t sr = wrap16(dq < 0 ? se - (dq & Rate::magnitudeMask) : se + dq);
        const std::int32_t dqsez = wrap16(sr + (zeros >> 1) - se);
        G726::update(state, y, Rate::w[index], Rate::f[index], dq, sr, dqsez, Rate::zeroLeakShift);
        return sr;
    }

    /** Returns the code of a difference (LOG, SUBTB, QUAN). */
    static std::int32_t quantize(std::int32_t difference, std::int32_t y)
    {
        const std::int32_t magnitude = difference < 0 ? -difference : difference;
        const int exponent = topBitIndex(static_cast<std::uint32_t>(magnitude >> 1)) + 1;
        const std::int32_t logarithm = (exponent << 7) + ((magnitude << 7 >> exponent) & 127) - (y >> 2);
        std::int32_t index = 0;
        while (index < static_cast<std::int32_t>(Rate::levels.size()) &&
               logarithm >= Rate::levels[static_cast<std::size_t>(index)]) {
            ++index;
        }
        if (difference < 0) {
            return topCode - index;
        }
        return index == 0 && !Rate::keepsPositiveZero ? topCode : index;
    }

    /** Returns a G.711 byte that has the received code (synchronous coding adjustment, clause 4.2.8). */
    static std::int32_t tandem(std::int32_t law, std::int32_t sr, std::int32_t se, std::int32_t y,
                               std::int32_t code)
    {
        const std::int32_t byte = G726Tandem::compress(law, sr);
        const std::int32_t again = quantize(G726Tandem::expand(law, byte) - se, y);
        if (again == code) {
            return byte;
        }
        // With the sign bit inverted, codes are in the order of their values.
        return (again ^ signBit) > (code ^ signBit) ? G726Tandem::nextLower(law, byte)
                                                    : G726Tandem::nextHigher(law, byte);
    }
};
