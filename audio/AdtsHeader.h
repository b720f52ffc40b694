#pragma once

#include <QByteArray>

#include <array>
#include <cstdint>
#include <optional>

/** The format of the sound in the header of an AAC frame (ISO/IEC 13818-7, clause 6.2). */
struct AdtsHeader
{
    static constexpr int size = 7; ///< Bytes of a header without a checksum.

    std::uint32_t sampleRate = 0; ///< Hz.
    std::uint8_t channels = 0;    ///< Channel count, 1 to 6 or 8.

    /** Reads a header; empty when the packet starts with none, or with one without rate or channels. */
    static std::optional<AdtsHeader> parse(const QByteArray& packet)
    {
        constexpr std::array<std::uint32_t, 13> rates{96000, 88200, 64000, 48000, 44100, 32000, 24000,
                                                      22050, 16000, 12000, 11025, 8000,  7350};
        if (packet.size() < size) {
            return std::nullopt;
        }
        const auto byte = [&packet](int index) { return static_cast<std::uint8_t>(packet[index]); };
        const bool synchronised = byte(0) == 0xFF && (byte(1) & 0xF6U) == 0xF0U;
        const std::size_t rate = byte(2) >> 2U & 15U;
        const unsigned channels = (byte(2) & 1U) << 2U | byte(3) >> 6U;
        if (!synchronised || rate >= rates.size() || channels == 0) {
            return std::nullopt;
        }
        return AdtsHeader{rates[rate], static_cast<std::uint8_t>(channels == 7 ? 8 : channels)};
    }
};
