#pragma once

#include "src/decoders/SpeechDecoder.h"
#include "src/decoders/g729a/G729A.h"

/** The decoder of G.729A. It decodes on the caller's thread, whatever its name says. */
class DecoderIsolated_Sorvix_G729A final : public SpeechDecoder
{
public:
    /** @param engine owned from now on */
    explicit DecoderIsolated_Sorvix_G729A(G729AState* engine) : m_engine(engine) {}

    /**
     * Decodes a packet of frames, each with its type byte first.
     *
     * @param pcm   receives 160 bytes for each frame; a multiple of 4
     * @param size  in: room in @p pcm, bytes; out: bytes written, unchanged on failure
     * @param chunk the packet
     * @return 0; -1 when a frame does not fit into the room, is refused or is not complete
     */
    std::int32_t DecodeAudio(std::uint8_t* pcm, std::uint32_t* size, const EncodedChunk* chunk) override;
    /** Frees the engine and the decoder. */
    void Release() override;

private:
    ~DecoderIsolated_Sorvix_G729A() = default;

    G729AState* m_engine;
    std::uint32_t m_result[2] = {}; ///< The first: bytes that the last frame took.
};
