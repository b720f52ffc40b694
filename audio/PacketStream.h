#pragma once

#include "src/playback/DecoderSlot.h"

#include <QByteArray>

#include <cstdint>
#include <optional>
#include <vector>

/** The parameters that each packet of a stream carries. */
struct StreamParameters
{
    std::uint32_t streamType = 0;
    std::uint32_t sampleRate = 0; ///< Hz.
    std::uint8_t channels = 0;
    std::uint32_t bitRate = 0;     ///< bit/s; G.726 only.
    std::uint8_t packingMode = 0;  ///< G.726: 1 for left, 0 for right.
    std::uint32_t frameNumber = 1; ///< Codec frames a packet.
};

/** One stream of packets through the playback path's decoder. */
class PacketStream
{
public:
    explicit PacketStream(const StreamParameters& parameters);

    /** The packet's 16-bit samples, native byte order, interleaved; empty when it cannot be decoded. */
    std::optional<std::vector<std::int16_t>> decode(const QByteArray& packet);

private:
    StreamParameters m_parameters;
    DecoderSlot m_decoder;
    std::vector<std::int16_t> m_block;
};
