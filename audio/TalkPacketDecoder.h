#pragma once

#include <QByteArray>

#include <cstdint>
#include <optional>
#include <vector>

/** One decoded talk packet. */
struct DecodedTalk
{
    std::uint32_t position = 0;        ///< Samples from the microphone's start to the first one; wraps.
    std::uint64_t captureTime = 0;     ///< Of the last sample, microseconds of the talker's steady clock.
    std::vector<std::int16_t> samples; ///< 8000 Hz mono.
};

/** The bitstream of a talk packet. */
struct TalkBitstream
{
    std::uint32_t position = 0;    ///< Samples from the microphone's start to the first one; wraps.
    std::uint64_t captureTime = 0; ///< Of the last sample, microseconds of the talker's steady clock.
    QByteArray muLaw;              ///< 8000 Hz mono.
};

/** Decodes talk packets: a PacketHeader, then G.711 mu-law at 8000 Hz mono. */
class TalkPacketDecoder
{
public:
    static constexpr int sampleRate = 8000; ///< Of the decoded samples, Hz.

    /** Takes a packet apart; empty for any other bytes. Any thread. */
    static std::optional<TalkBitstream> bitstreamOf(const QByteArray& packet);

    /** Decodes a packet; empty for any other bytes. Any thread. */
    static std::optional<DecodedTalk> decode(const QByteArray& packet);
};
