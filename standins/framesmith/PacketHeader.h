#pragma once

/**
 * The header in front of the bitstream of each packet, 20 bytes, numbers little endian:
 *
 *   offset  width  meaning
 *   0       4      "VDAP"
 *   4       u8     version, 1
 *   5       u8     length of this header, 20
 *   6       u8     channel count
 *   7       u8     0
 *   8       u32    stream type
 *   12      u32    sample rate, Hz
 *   16      u32    position of the packet's first sample since the channel's start, samples; wraps
 *
 * A packet of 640 G.711 samples is 660 bytes long, a multiple of 3, so its Base64 text needs no padding.
 */

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace framesmith {

struct PacketHeader
{
    static constexpr std::size_t size = 20;

    std::uint8_t channels = 0;
    std::uint32_t streamType = 0;
    std::uint32_t sampleRate = 0; ///< Hz.
    std::uint32_t position = 0;   ///< Samples since the channel's start.

    std::array<std::uint8_t, size> toBytes() const;

    /** Reads the header at the start of a packet; empty when the packet does not start with one. */
    static std::optional<PacketHeader> fromBytes(const std::uint8_t* packet, std::size_t packetSize);
};

} // namespace framesmith
