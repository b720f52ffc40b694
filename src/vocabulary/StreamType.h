#pragma once

#include <cstdint>

/** The codec values that media packets carry; each is one bit. */
namespace StreamType {

inline constexpr std::uint32_t G7221 = 256;
inline constexpr std::uint32_t G729A = 512;
inline constexpr std::uint32_t Aac = 1024;
inline constexpr std::uint32_t Undecoded = 2048; ///< Known, but without a decoder.
inline constexpr std::uint32_t AmrNb = 4096;
inline constexpr std::uint32_t G711MuLaw = 8192;
inline constexpr std::uint32_t G711ALaw = 16384;
inline constexpr std::uint32_t G726 = 32768;

} // namespace StreamType
