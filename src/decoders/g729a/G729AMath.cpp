#include "src/decoders/g729a/G729AMath.h"

#include "src/decoders/g729a/G729ATables.h"

namespace G729AMath {

namespace {

constexpr int fractionMask = 0x7FFF;

/** Between an entry of a falling table and the next, in Q31. */
std::int32_t interpolateFalling(const std::int16_t* entry, std::int32_t fraction)
{
    return (entry[0] << 16) - (entry[0] - entry[1]) * fraction * 2;
}

} // namespace

Logarithm log2(std::int32_t value)
{
    if (value <= 0) {
        return {0, 0};
    }
    const int doublings = norm(value);
    const std::int32_t mantissa = value << doublings;
    const std::int16_t* entry = G729ATables::tablog + ((mantissa >> 25) - 32);
    const std::int32_t between = (mantissa >> 10) & fractionMask;
    return {30 - doublings, entry[0] + (((entry[1] - entry[0]) * between) >> 15)};
}

std::int32_t pow2of14(std::int32_t fraction)
{
    const std::int16_t* entry = G729ATables::tabpow + (fraction >> 10);
    return (interpolateFalling(entry, (fraction & 0x3FF) << 5) + 0x8000) >> 16;
}

std::int32_t inverseSqrt(std::int32_t value)
{
    if (value <= 0) {
        return 0x3FFFFFFF;
    }
    const int doublings = norm(value);
    const int exponent = 30 - doublings;
    const std::int32_t mantissa = (value << doublings) >> (exponent % 2 == 0 ? 1 : 0);
    const std::int16_t* entry = G729ATables::tabsqr + ((mantissa >> 25) - 16);
    return interpolateFalling(entry, (mantissa >> 10) & fractionMask) >> (exponent / 2 + 1);
}

std::int32_t divide15(std::int32_t dividend, std::int32_t divisor)
{
    std::int32_t quotient = 0;
    for (int step = 0; step < 15; ++step) {
        quotient *= 2;
        dividend = shift(dividend, 1);
        if (dividend >= divisor) {
            dividend = wrap32(static_cast<std::int64_t>(dividend) - divisor);
            ++quotient;
        }
    }
    return quotient;
}

} // namespace G729AMath
