#pragma once

#include "src/decoders/SpeechDecoder.h"
#include "src/decoders/g7221/G7221.h"

/** G.722.1 behind the decoder interface. */
class DecoderContext_Sorvix_G7221 final : public SpeechDecoder
{
public:
    /** @param engine owned from now on */
    explicit DecoderContext_Sorvix_G7221(G7221State* engine) : m_engine(engine) {}

    std::int32_t DecodeAudio(std::uint8_t* pcm, std::uint32_t* size, const EncodedChunk* chunk) override;
    void Release() override;

private:
    ~DecoderContext_Sorvix_G7221() = default;

    G7221State* m_engine;
    G7221FrameResult m_result{};
};
