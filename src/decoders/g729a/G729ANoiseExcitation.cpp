#include "src/decoders/g729a/G729ANoiseExcitation.h"

#include "src/decoders/g729a/G729AMath.h"
#include "src/decoders/g729a/G729APitch.h"

#include <algorithm>
#include <cstdlib>

using G729AMath::wrap32;

namespace G729ANoiseExcitation {

namespace {

constexpr int pulses = 4;
constexpr int drawsPerSample = 12;
constexpr int headerWords = 3;
constexpr int maxPulseGain = 5000;

/** What the first words decide. */
struct Choice
{
    G729APitch::Lag lag;
    int place[pulses];
    bool positive[pulses];
    int pitchGain; ///< Q15
};

Choice choose(const std::int16_t* random)
{
    const auto first = static_cast<std::uint16_t>(random[0]);
    const auto second = static_cast<std::uint16_t>(random[1]);
    const auto bits = [](std::uint16_t word, unsigned from, unsigned count) {
        return static_cast<int>((word >> from) & ((1U << count) - 1U));
    };
    Choice choice{};
    const int fraction = bits(first, 0, 2);
    choice.lag = {40 + bits(first, 2, 6), fraction == 3 ? 0 : fraction - 1};
    choice.place[0] = 5 * bits(first, 8, 3);
    choice.positive[0] = bits(first, 11, 1) != 0;
    choice.place[1] = 5 * bits(first, 12, 3) + 1;
    choice.positive[1] = bits(first, 15, 1) != 0;
    choice.place[2] = 5 * bits(second, 0, 3) + 2;
    choice.positive[2] = bits(second, 3, 1) != 0;
    choice.place[3] = 5 * bits(second, 5, 3) + 3 + bits(second, 4, 1);
    choice.positive[3] = bits(second, 8, 1) != 0;
    choice.pitchGain = 2 * (random[2] & 8191);
    return choice;
}

/** Scales samples by a factor in floating point form, level >= 0. */
void scale(std::int16_t* samples, std::int32_t level)
{
    const int doublings = level == 0 ? 0 : G729AMath::norm(level);
    const std::int32_t mantissa = (level << doublings) >> 16;
    const int right = doublings - 14;
    for (int i = 0; i < G729ASubframeSamples; ++i) {
        const std::int32_t value = (samples[i] * mantissa + 16384) >> 15;
        if (right > 15) {
            samples[i] = 0;
        } else if (right > 0) {
            samples[i] = wrap16((value >> right) + ((value >> (right - 1)) & 1));
        } else {
            samples[i] = wrap16(G729AMath::shift(value, -right));
        }
    }
}

/** The Gaussian part, its energy set by the gain. */
void makeGaussian(const std::int16_t* random, std::int16_t gain, std::int16_t* gaussian)
{
    for (int i = 0; i < G729ASubframeSamples; ++i) {
        std::int32_t sum = 0;
        for (int draw = 0; draw < drawsPerSample; ++draw) {
            sum += random[drawsPerSample * i + draw];
        }
        gaussian[i] = static_cast<std::int16_t>(sum >> 7);
    }
    const std::int32_t energy = G729AMath::energy(gaussian, G729ASubframeSamples);
    const std::int32_t target = gain + ((gain * 19043 + 16384) >> 15);
    scale(gaussian, G729AMath::multiplyLong(G729AMath::inverseSqrt(energy), target));
}

/** The quadratic 4 X^2 + 2 b X + c = 0 of the pulses' gain, halved: a quarter of its discriminant, and b. */
struct Quadratic
{
    std::int32_t discriminant;
    std::int32_t b;
    int exponent; ///< Samples entered it shifted right by this, less one.
};

/** The sum of the samples under the pulses, each with its pulse's sign. */
std::int32_t underPulses(const Choice& choice, const std::int16_t* samples, int right)
{
    std::int32_t sum = 0;
    for (int pulse = 0; pulse < pulses; ++pulse) {
        const int sample = samples[choice.place[pulse]] >> right;
        sum += choice.positive[pulse] ? sample : -sample;
    }
    return sum;
}

/** The energy that the pulses have to reach, for a subframe. */
std::int32_t targetEnergy(std::int16_t gain)
{
    return 2 * gain * ((80 * gain) >> 6);
}

Quadratic quadraticOfMix(const Choice& choice, const std::int16_t* exc, std::int16_t gain)
{
    int peak = 0;
    for (int i = 0; i < G729ASubframeSamples; ++i) {
        peak = std::max(peak, std::abs(int{exc[i]}));
    }
    const int doublings = 14 - topBitIndex(static_cast<std::uint32_t>(peak));
    const int right = peak == 0 ? 0 : std::max(3 - std::max(doublings, 0), 0);
    std::int16_t shifted[G729ASubframeSamples];
    for (int i = 0; i < G729ASubframeSamples; ++i) {
        shifted[i] = static_cast<std::int16_t>(exc[i] >> right);
    }
    const std::int32_t energy = wrap32(2LL * G729AMath::energy(shifted, G729ASubframeSamples));
    const std::int32_t b = underPulses(choice, exc, right) >> 1;
    const std::int64_t left = (targetEnergy(gain) >> (1 + 2 * right)) - std::int64_t{energy};
    return {wrap32(left + 2LL * b * b), b, right + 1};
}

Quadratic quadraticOfGaussian(const Choice& choice, const std::int16_t* gaussian, std::int16_t gain)
{
    unsigned magnitudes = 0;
    for (const int place : choice.place) {
        magnitudes |= static_cast<unsigned>(std::abs(int{gaussian[place]}));
    }
    const int exponent = (magnitudes & 0x4000U) != 0 ? 2 : 1;
    const std::int32_t b = underPulses(choice, gaussian, exponent);
    const std::int32_t energy = G729AMath::multiplyLong(targetEnergy(gain), 24576); // 0.75
    return {wrap32((energy >> (2 * exponent - 1)) + 2LL * b * b), b, exponent};
}

/** About the root of half the value: the largest even number whose double square is not above it. */
std::int32_t halfRoot(std::int32_t value)
{
    std::int32_t root = 0;
    for (std::int32_t step = 16384; step >= 2; step /= 2) {
        const std::int32_t tried = root + step;
        if (2 * tried * tried <= value) {
            root = tried;
        }
    }
    return root;
}

/** The solution of the smaller magnitude, as a gain. */
int smallerSolution(const Quadratic& quadratic)
{
    const std::int32_t root = halfRoot(quadratic.discriminant);
    const std::int32_t high = root - quadratic.b;
    const std::int32_t low = -(quadratic.b + root);
    const std::int32_t x = std::abs(low) < std::abs(high) ? low : high;
    const std::int32_t gain =
        quadratic.exponent == 1 ? (x >> 1) + (x & 1) : G729AMath::shift(x, quadratic.exponent - 2);
    return std::clamp(gain, -maxPulseGain, maxPulseGain);
}

} // namespace

void make(std::int16_t* exc, const std::int16_t* random, std::int16_t gain)
{
    const Choice choice = choose(random);
    std::int16_t gaussian[G729ASubframeSamples];
    makeGaussian(random + headerWords, gain, gaussian);
    G729APitch::adaptiveCodebook(exc, choice.lag, G729APitch::Guard::None);
    for (int i = 0; i < G729ASubframeSamples; ++i) {
        exc[i] = wrap16(((exc[i] * choice.pitchGain + 16384) >> 15) + gaussian[i]);
    }
    Quadratic quadratic = quadraticOfMix(choice, exc, gain);
    if (quadratic.discriminant < 0) {
        std::copy_n(gaussian, G729ASubframeSamples, exc);
        quadratic = quadraticOfGaussian(choice, gaussian, gain);
    }
    const int pulseGain = smallerSolution(quadratic);
    for (int pulse = 0; pulse < pulses; ++pulse) {
        std::int16_t& sample = exc[choice.place[pulse]];
        sample = wrap16(sample + (choice.positive[pulse] ? pulseGain : -pulseGain));
    }
}

} // namespace G729ANoiseExcitation
