#pragma once

#include "src/decoders/Integer.h"

/**
 * Integer forms of ITU-T G.729's basic operators and functions. Sums wrap modulo 2^32; nothing saturates but
 * clamp16.
 */
namespace G729AMath {

/** Returns the low 32 bits. */
constexpr std::int32_t wrap32(std::int64_t value)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<std::uint64_t>(value)));
}

/** Returns the nearest value of 16 bits. */
constexpr std::int16_t clamp16(std::int32_t value)
{
    return static_cast<std::int16_t>(value > 32767 ? 32767 : value < -32768 ? -32768 : value);
}

/** Returns the sum of the products of two rows, modulo 2^32. */
inline std::int32_t dot(const std::int16_t* a, const std::int16_t* b, int count)
{
    std::uint32_t sum = 0;
    for (int i = 0; i < count; ++i) {
        sum += static_cast<std::uint32_t>(a[i] * b[i]);
    }
    return static_cast<std::int32_t>(sum);
}

/** Returns the sum of the squares of a row, modulo 2^32. */
inline std::int32_t energy(const std::int16_t* samples, int count)
{
    return dot(samples, samples, count);
}

/** Returns how often a positive value must be doubled until it is at least 2^30. */
constexpr int norm(std::int32_t value)
{
    return 30 - topBitIndex(static_cast<std::uint32_t>(value));
}

/** Shifts to the left, or, by a negative number, arithmetically to the right. */
constexpr std::int32_t shift(std::int32_t value, int by)
{
    if (by >= 0) {
        return by > 31 ? 0 : static_cast<std::int32_t>(static_cast<std::uint32_t>(value) << by);
    }
    return value >> (by < -31 ? 31 : -by);
}

/** Multiplies 32 by 16 bits, Q15; the product is even, since the Recommendation splits the long factor. */
constexpr std::int32_t multiplyLong(std::int32_t value, std::int32_t factor)
{
    return wrap32(2 * ((static_cast<std::int64_t>(value & ~1) * factor) >> 16));
}

/** Returns the next word of the Recommendation's random generator. */
constexpr std::uint16_t draw(std::uint16_t seed)
{
    return static_cast<std::uint16_t>(seed * 31821U + 13849U);
}

/** A logarithm to base 2. */
struct Logarithm
{
    std::int32_t exponent; ///< Its whole part.
    std::int32_t fraction; ///< Q15.
};

/** Returns the logarithm to base 2 (Log2); 0 for a value that is not positive. */
Logarithm log2(std::int32_t value);

/** Returns 2^(14 + fraction) (Pow2); @p fraction is in Q15, 0 to 32767. */
std::int32_t pow2of14(std::int32_t fraction);

/** Returns 2^30 / sqrt(value) (Inv_sqrt); 0x3FFFFFFF for a value that is not positive. */
std::int32_t inverseSqrt(std::int32_t value);

/** Divides by restoring, Q15, for 0 <= dividend <= divisor; others take 15 steps on wrapping words. */
std::int32_t divide15(std::int32_t dividend, std::int32_t divisor);

} // namespace G729AMath
