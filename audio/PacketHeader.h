#pragma once

/**
 * @file
 * The header in front of the bitstream of each packet, 32 bytes, numbers little endian:
 *
 *   offset  width  meaning
 *   0       4      "VDAP"
 *   4       u8     version, 1
 *   5       u8     length of this header, 32 or more; bytes beyond 32 are zero
 *   6       u8     channel count
 *   7       u8     0
 *   8       u32    stream type
 *   12      u32    sample rate, Hz
 *   16      u32    position of the packet's first sample since the channel's start, samples; wraps
 *   20      u32    0
 *   24      u64    when the packet's last sample was captured, microseconds of the sender's steady clock
 *
 * A packet of 640 G.711 samples is 672 bytes long, a multiple of 3, so its Base64 text needs no padding.
 */

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

/** The fields of a packet's header. */
struct PacketHeader
{
    static constexpr std::size_t size = 32; ///< Bytes of the fields; a header may have more behind them.

    std::uint8_t channels = 0;     ///< Channel count.
    std::uint32_t streamType = 0;  ///< A value of StreamType.
    std::uint32_t sampleRate = 0;  ///< Hz.
    std::uint32_t position = 0;    ///< Samples since the channel's start.
    std::uint64_t captureTime = 0; ///< Microseconds.
    std::uint8_t length = size;    ///< Of the header as read.

    /** Returns the header's bytes. */
    std::array<std::uint8_t, size> toBytes() const;

    /** Reads the header at the start of a packet; empty when the packet does not start with one. */
    static std::optional<PacketHeader> fromBytes(const std::uint8_t* packet, std::size_t packetSize);
};
