#pragma once

#include "src/playback/DecoderSlot.h"

#include <QByteArray>

#include <cstdint>
#include <optional>
#include <vector>

/** The parameters of each packet of a stream. */
struct StreamParameters
{
    std::uint32_t streamType = 0;  ///< A value of StreamType.
    std::uint32_t sampleRate = 0;  ///< Hz.
    std::uint8_t channels = 0;     ///< Channel count.
    std::uint32_t bitRate = 0;     ///< bit/s; G.726 only.
    std::uint8_t packingMode = 0;  ///< G.726: 1 for left, 0 for right.
    std::uint32_t frameNumber = 1; ///< Codec frames in each packet.
};

/** Decodes a stream of packets by the decoders of the playback path. Used by one thread at a time. */
class PacketStream
{
public:
    /** @param parameters of every packet */
    explicit PacketStream(const StreamParameters& parameters);

    /** Returns a packet's 16-bit samples, native byte order, interleaved; empty when it is not decoded. */
    std::optional<std::vector<std::int16_t>> decode(const QByteArray& packet);

private:
    StreamParameters m_parameters;
    DecoderSlot m_decoder;
    std::vector<std::int16_t> m_block;
};
