#pragma once

#include "src/decoders/SpeechDecoder.h"

struct G726State;

/** The decoder of G.726. A codeword may begin in one packet and end in the next. */
class DecoderContext_SDK_G726 final : public SpeechDecoder
{
public:
    /** @param state owned from now on */
    explicit DecoderContext_SDK_G726(G726State* state) : m_state(state) {}

    /**
     * Decodes a packet; never fails.
     *
     * @param pcm   pcmBlockSize bytes; codewords whose samples do not fit are not decoded
     * @param size  receives the bytes written; its value before the call is not read
     * @param chunk the packet
     * @return 0
     */
    std::int32_t DecodeAudio(std::uint8_t* pcm, std::uint32_t* size, const EncodedChunk* chunk) override;
    /** Frees the state and the decoder. */
    void Release() override;

private:
    ~DecoderContext_SDK_G726() = default;

    G726State* m_state;
};
