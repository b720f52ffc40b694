#pragma once

#include "src/decoders/DecoderContext.h"
#include "src/playback/UniquePtr.h"

#include <cstdint>

struct _TMediaDataPacketInfoV3; // NOLINT(bugprone-reserved-identifier): its name in the interface

/**
 * The decoder of a stream, made at the first packet and replaced at any packet whose stream type, rate,
 * channels, bit rate or packing differ from the packet's before. Used by one thread at a time.
 */
class DecoderSlot
{
public:
    /**
     * Decodes a packet to 16-bit little-endian interleaved samples.
     *
     * @param pcm    receives the samples
     * @param size   in: room in @p pcm, bytes; out: bytes written, unchanged on failure
     * @param packet the packet
     * @return 0; negative on failure, also when there is no decoder for the packet
     */
    std::int32_t Decode(std::uint8_t* pcm, std::uint32_t* size, const _TMediaDataPacketInfoV3& packet);

private:
    struct Key
    {
        std::uint32_t streamType = 0;
        std::uint32_t sampleRate = 0;
        std::uint8_t channels = 0;
        std::uint32_t bitRate = 0;
        std::uint8_t packingMode = 0;
    };

    struct Layout;

    void ensureDecoder(const _TMediaDataPacketInfoV3& packet);

    QRNL::SDK::Utility::unique_ptr<DecoderContext> m_decoder;
    Key m_key; ///< All zero while there is no decoder.
};
