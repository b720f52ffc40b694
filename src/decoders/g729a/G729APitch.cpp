#include "src/decoders/g729a/G729APitch.h"

#include "src/decoders/g729a/G729AMath.h"
#include "src/decoders/g729a/G729ATables.h"

#include <algorithm>

namespace G729APitch {

namespace {

constexpr int pairs = 10; // taps on either side
constexpr int guardedPairs = 4;
constexpr int resolution = 3;
constexpr std::int32_t highHold = 0x3FFFFFFF;
constexpr std::int32_t lowHold = -0x40000000;
constexpr int rounding = 16384;

// The guarded taps add up to less than 57,000: with no sample above this they reach no hold.
constexpr int harmless = 18000;

/** The filter of one phase as it lies over the samples, oldest first. */
struct Phase
{
    std::int16_t taps[2 * pairs];

    explicit Phase(int phase)
    {
        for (int i = 0; i < pairs; ++i) {
            taps[pairs - 1 - i] = G729ATables::inter3l[phase + resolution * i];
            taps[pairs + i] = G729ATables::inter3l[resolution - phase + resolution * i];
        }
    }
};

/** The filter's sum, held in its first pairs. @param x the sample that the innermost left tap meets */
std::int32_t guardedSum(const std::int16_t* x, const Phase& phase)
{
    std::int32_t sum = 0;
    for (int i = 0; i < guardedPairs; ++i) {
        const std::int32_t second = x[1 + i] * phase.taps[pairs + i];
        sum += x[-i] * phase.taps[pairs - 1 - i];
        if (sum > highHold) {
            sum = highHold + std::min(second, 0);
        } else if (sum < lowHold) {
            sum = lowHold + std::max(second, 0);
        } else {
            sum += second;
        }
    }
    constexpr int rest = pairs - guardedPairs;
    const std::int64_t whole = static_cast<std::int64_t>(sum) +
                               G729AMath::dot(x - (pairs - 1), phase.taps, rest) +
                               G729AMath::dot(x + 1 + guardedPairs, phase.taps + pairs + guardedPairs, rest);
    return G729AMath::wrap32(whole);
}

bool isLoud(int sample)
{
    return sample > harmless || sample < -harmless;
}

} // namespace

Lag firstLag(int index)
{
    if (index >= 197) {
        return {index - 112, 0};
    }
    const int whole = (((index + 2) * 10923) >> 15) + 19; // 10923 is a third, Q15
    return {whole, index - 3 * whole + 58};
}

Lag secondLag(int index, int before)
{
    const int lowest = std::min(std::max(before - 5, 20), 134);
    const int step = (((index + 2) * 10923) >> 15) - 1;
    return {lowest + step, index - 2 - 3 * step};
}

void adaptiveCodebook(std::int16_t* exc, Lag lag, Guard guard)
{
    // A third ahead is two thirds behind the sample before.
    const int phaseIndex = lag.fraction > 0 ? resolution - lag.fraction : -lag.fraction;
    const std::int16_t* x = exc - lag.whole - (lag.fraction > 0 ? 1 : 0);
    const Phase phase(phaseIndex);
    const std::int16_t* made = exc; // what lies before is there already
    bool loud = guard != Guard::None &&
                std::any_of(x - (pairs - 1), std::min(x + G729ASubframeSamples + pairs, made), isLoud);
    for (int n = 0; n < G729ASubframeSamples; ++n, ++x) {
        const std::int32_t sum =
            loud ? guardedSum(x, phase) : G729AMath::dot(x - (pairs - 1), phase.taps, 2 * pairs);
        exc[n] = wrap16(G729AMath::wrap32(static_cast<std::int64_t>(sum) + rounding) >> 15);
        loud = loud || (guard != Guard::None && isLoud(exc[n]));
    }
}

} // namespace G729APitch
