#pragma once

#include <QByteArray>

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>

/** The format of the sound in the header of an AAC frame (ISO/IEC 13818-7, clause 6.2). */
struct AdtsHeader
{
    static constexpr int size = 7;            ///< Bytes of a header without a checksum.
    static constexpr int maxFrameSize = 8191; ///< Bytes of a frame with its header.

    std::uint32_t sampleRate = 0; ///< Hz.
    std::uint8_t channels = 0;    ///< Channel count, 1 to 6 or 8.

    /** The sample rates in Hz, by their index. */
    static constexpr std::array<int, 13> rates{96000, 88200, 64000, 48000, 44100, 32000, 24000,
                                               22050, 16000, 12000, 11025, 8000,  7350};

    /** Returns the rate of an index in Hz; 0 for an index without one. */
    static int rateOf(int index)
    {
        return index >= 0 && index < static_cast<int>(rates.size()) ? rates[static_cast<std::size_t>(index)]
                                                                    : 0;
    }

    /** Returns the index of a rate; empty for one that has none. */
    static std::optional<int> indexOf(int rate)
    {
        const auto found = std::find(rates.begin(), rates.end(), rate);
        return found == rates.end() ? std::nullopt : std::optional(static_cast<int>(found - rates.begin()));
    }

    /**
     * Makes the header of a frame.
     *
     * @param objectType    1 to 4; 2 is AAC-LC
     * @param rateIndex     0 to 12
     * @param configuration of the channels, 1 to 7
     * @param payloadSize   bytes of the frame without the header, up to maxFrameSize - size
     */
    static QByteArray make(int objectType, int rateIndex, int configuration, int payloadSize)
    {
        const auto frame = static_cast<unsigned>(payloadSize + size);
        const auto channelBits = static_cast<unsigned>(configuration);
        const unsigned bytes[size] = {
            0xFF,
            0xF1, // MPEG-4, no check sum
            static_cast<unsigned>(objectType - 1) << 6U | static_cast<unsigned>(rateIndex) << 2U |
                channelBits >> 2U,
            (channelBits & 3U) << 6U | frame >> 11U,
            frame >> 3U & 0xFFU,
            (frame & 7U) << 5U | 0x1FU,
            0xFC,
        };
        QByteArray header;
        for (const unsigned byte : bytes) {
            header.append(static_cast<char>(byte));
        }
        return header;
    }

    /** Reads a header; empty when the packet starts with none, or with one without rate or channels. */
    static std::optional<AdtsHeader> parse(const QByteArray& packet)
    {
        if (packet.size() < size) {
            return std::nullopt;
        }
        const auto byte = [&packet](int index) { return static_cast<std::uint8_t>(packet[index]); };
        const bool synchronised = byte(0) == 0xFF && (byte(1) & 0xF6U) == 0xF0U;
        const int rate = rateOf(byte(2) >> 2U & 15U);
        const unsigned channels = (byte(2) & 1U) << 2U | byte(3) >> 6U;
        if (!synchronised || rate == 0 || channels == 0) {
            return std::nullopt;
        }
        return AdtsHeader{static_cast<std::uint32_t>(rate),
                          static_cast<std::uint8_t>(channels == 7 ? 8 : channels)};
    }
};
