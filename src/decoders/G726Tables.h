#pragma once

/**
 * @file
 * The constants of each rate (ITU-T G.726, tables 3 to 14), in the scale of the integer coder. The tables of
 * a code are symmetrical: entry i of the upper half equals entry (size - 1 - i).
 */

#include <array>
#include <cstddef>
#include <cstdint>

/** Returns the table of all codes from its lower half. */
template<std::size_t Half>
constexpr std::array<std::int32_t, 2 * Half> mirrored(const std::int32_t (&half)[Half])
{
    std::array<std::int32_t, 2 * Half> whole{};
    for (std::size_t i = 0; i < Half; ++i) {
        whole[i] = half[i];
        whole[2 * Half - 1 - i] = half[i];
    }
    return whole;
}

/** 16 kbit/s. */
struct G726Rate16
{
    /** Bits of a code. */
    static constexpr int codeBits = 2;
    /** Magnitude bits of a difference. */
    static constexpr std::int32_t magnitudeMask = 0x3FFF;
    /** Right shift of the zero predictor's leak. */
    static constexpr int zeroLeakShift = 8;
    /** Whether the smallest positive difference has code 0; else it has the largest code. */
    static constexpr bool keepsPositiveZero = true;
    /** Logarithm of the difference, by code. */
    static constexpr auto dqln = mirrored({116, 365});
    /** Scale factor multiplier W, by code. */
    static constexpr auto w = mirrored({-704, 14048});
    /** Speed control function F, by code. */
    static constexpr auto f = mirrored({0, 3584});
    /** Decision levels of the quantizer. */
    static constexpr std::array<std::int32_t, 1> levels{261};
};

/** 24 kbit/s. */
struct G726Rate24
{
    /** Bits of a code. */
    static constexpr int codeBits = 3;
    /** Magnitude bits of a difference. */
    static constexpr std::int32_t magnitudeMask = 0x3FFF;
    /** Right shift of the zero predictor's leak. */
    static constexpr int zeroLeakShift = 8;
    /** Whether the smallest positive difference has code 0; else it has the largest code. */
    static constexpr bool keepsPositiveZero = false;
    /** Logarithm of the difference, by code. */
    static constexpr auto dqln = mirrored({-2048, 135, 273, 373});
    /** Scale factor multiplier W, by code. */
    static constexpr auto w = mirrored({-128, 960, 4384, 18624});
    /** Speed control function F, by code. */
    static constexpr auto f = mirrored({0, 512, 1024, 3584});
    /** Decision levels of the quantizer. */
    static constexpr std::array<std::int32_t, 3> levels{8, 218, 331};
};

/** 32 kbit/s. */
struct G726Rate32
{
    /** Bits of a code. */
    static constexpr int codeBits = 4;
    /** Magnitude bits of a difference. */
    static constexpr std::int32_t magnitudeMask = 0x3FFF;
    /** Right shift of the zero predictor's leak. */
    static constexpr int zeroLeakShift = 8;
    /** Whether the smallest positive difference has code 0; else it has the largest code. */
    static constexpr bool keepsPositiveZero = false;
    /** Logarithm of the difference, by code. */
    static constexpr auto dqln = mirrored({-2048, 4, 135, 213, 273, 323, 373, 425});
    /** Scale factor multiplier W, by code. */
    static constexpr auto w = mirrored({-384, 576, 1312, 2048, 3584, 6336, 11360, 35904});
    /** Speed control function F, by code. */
    static constexpr auto f = mirrored({0, 0, 0, 512, 512, 512, 1536, 3584});
    /** Decision levels of the quantizer. */
    static constexpr std::array<std::int32_t, 7> levels{-124, 80, 178, 246, 300, 349, 400};
};

/** 40 kbit/s. */
struct G726Rate40
{
    /** Bits of a code. */
    static constexpr int codeBits = 5;
    /** Magnitude bits of a difference. */
    static constexpr std::int32_t magnitudeMask = 0x7FFF;
    /** Right shift of the zero predictor's leak. */
    static constexpr int zeroLeakShift = 9;
    /** Whether the smallest positive difference has code 0; else it has the largest code. */
    static constexpr bool keepsPositiveZero = false;
    /** Logarithm of the difference, by code. */
    static constexpr auto dqln =
        mirrored({-2048, -66, 28, 104, 169, 224, 274, 318, 358, 395, 429, 459, 488, 514, 539, 566});
    /** Scale factor multiplier W, by code. */
    static constexpr auto w = mirrored(
        {448, 448, 768, 1248, 1280, 1312, 1856, 3200, 4512, 5728, 7008, 8960, 11456, 14080, 16928, 22272});
    /** Speed control function F, by code. */
    static constexpr auto f =
        mirrored({0, 0, 0, 0, 0, 512, 512, 512, 512, 512, 1024, 1536, 2048, 2560, 3072, 3072});
    /** Decision levels of the quantizer. */
    static constexpr std::array<std::int32_t, 15> levels{-122, -16, 68,  139, 198, 250, 298, 339,
                                                         378,  413, 445, 475, 502, 528, 553};
};
