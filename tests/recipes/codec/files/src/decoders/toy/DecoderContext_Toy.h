#pragma once

#include "src/decoders/SpeechDecoder.h"

/** The decoder of the toy codec: each byte is the upper half of a sample. */
class DecoderContext_Toy final : public SpeechDecoder
{
public:
    /**
     * Decodes a packet.
     *
     * @param pcm   receives two bytes for each byte of the packet
     * @param size  in: room in @p pcm, bytes; out: bytes written, unchanged on failure
     * @param chunk the packet
     * @return 0; -1 when the samples do not fit into the room
     */
    std::int32_t DecodeAudio(std::uint8_t* pcm, std::uint32_t* size, const EncodedChunk* chunk) override;
    /** Frees the decoder. */
    void Release() override;

private:
    ~DecoderContext_Toy() = default;
};

/** The toy codec, 8 kHz mono. Returns null on failure; the decoder is freed by its Release. Any thread. */
DecoderContext* CreateDecoderToy();
