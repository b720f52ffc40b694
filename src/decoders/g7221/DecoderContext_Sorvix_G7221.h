#pragma once

#include "src/decoders/SpeechDecoder.h"
#include "src/decoders/g7221/G7221.h"

/** The decoder of G.722.1. */
class DecoderContext_Sorvix_G7221 final : public SpeechDecoder
{
public:
    /** @param engine owned from now on */
    explicit DecoderContext_Sorvix_G7221(G7221State* engine) : m_engine(engine) {}

    /**
     * Decodes a packet. Its frames have equal sizes: 80 bytes are 32 kbit/s, any other size is 24 kbit/s.
     *
     * @param pcm   receives 640 bytes for each frame; a multiple of 4
     * @param size  in: room in @p pcm, bytes; out: bytes written, unchanged on failure
     * @param chunk the packet; its bytes are swapped during the call
     * @return 0; -1 when a frame does not fit into the room, or is refused
     */
    std::int32_t DecodeAudio(std::uint8_t* pcm, std::uint32_t* size, const EncodedChunk* chunk) override;
    /** Frees the engine and the decoder. */
    void Release() override;

private:
    ~DecoderContext_Sorvix_G7221() = default;

    G7221State* m_engine;
    G7221FrameResult m_result{};
};
