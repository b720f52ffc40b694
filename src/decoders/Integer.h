#pragma once

/**
 * @file
 * Integer operations of the Recommendations' fixed-point arithmetic.
 */

#include <cstdint>

/** Returns the low 16 bits: what a store into a 16-bit word keeps. */
constexpr std::int16_t wrap16(std::int32_t value)
{
    return static_cast<std::int16_t>(static_cast<std::uint16_t>(static_cast<std::uint32_t>(value)));
}

/** Returns the index of the highest bit that is set; -1 for 0. */
constexpr int topBitIndex(std::uint32_t value)
{
#if defined(__GNUC__) || defined(__clang__)
    return value == 0 ? -1 : 31 - __builtin_clz(value);
#else
    int index = -1;
    for (unsigned width = 16; width > 0; width >>= 1U) {
        if (value >> width != 0) {
            index += static_cast<int>(width);
            value >>= width;
        }
    }
    return index + static_cast<int>(value);
#endif
}
