#pragma once

#include "src/decoders/SpeechDecoder.h"

struct G726State;

/** G.726 behind the decoder interface; a codeword may lie across two packets. */
class DecoderContext_SDK_G726 final : public SpeechDecoder
{
public:
    /** @param state owned from now on */
    explicit DecoderContext_SDK_G726(G726State* state) : m_state(state) {}

    /**
     * Never fails.
     *
     * @param size out only: the room that is given is not looked at. pcm has pcmBlockSize bytes; what does
     * not fit them is not decoded
     */
    std::int32_t DecodeAudio(std::uint8_t* pcm, std::uint32_t* size, const EncodedChunk* chunk) override;
    void Release() override;

private:
    ~DecoderContext_SDK_G726() = default;

    G726State* m_state;
};
