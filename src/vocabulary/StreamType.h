#pragma once

#include <cstdint>

/** The codec values in media packets; each is one bit. */
namespace StreamType {

inline constexpr std::uint32_t G7221 = 256;      ///< ITU-T G.722.1.
inline constexpr std::uint32_t G729A = 512;      ///< ITU-T G.729 Annex A, with Annex B.
inline constexpr std::uint32_t Aac = 1024;       ///< AAC (ISO/IEC 13818-7 or 14496-3).
inline constexpr std::uint32_t Undecoded = 2048; ///< A known value without a decoder.
inline constexpr std::uint32_t AmrNb = 4096;     ///< AMR narrow band (3GPP TS 26.071).
inline constexpr std::uint32_t G711MuLaw = 8192; ///< ITU-T G.711, mu-law.
inline constexpr std::uint32_t G711ALaw = 16384; ///< ITU-T G.711, A-law.
inline constexpr std::uint32_t G726 = 32768;     ///< ITU-T G.726.

} // namespace StreamType
