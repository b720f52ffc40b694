#pragma once

#include "src/decoders/SpeechDecoder.h"
#include "src/decoders/g729a/G729A.h"

/** G.729A behind the decoder interface; in spite of its name it decodes on the caller's thread. */
class DecoderIsolated_Sorvix_G729A final : public SpeechDecoder
{
public:
    /** @param engine owned from now on */
    explicit DecoderIsolated_Sorvix_G729A(G729AState* engine) : m_engine(engine) {}

    std::int32_t DecodeAudio(std::uint8_t* pcm, std::uint32_t* size, const EncodedChunk* chunk) override;
    void Release() override;

private:
    ~DecoderIsolated_Sorvix_G729A() = default;

    G729AState* m_engine;
    std::uint32_t m_result[2] = {}; ///< The first: bytes that the last frame took.
};
