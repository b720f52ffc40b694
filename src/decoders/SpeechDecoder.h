#pragma once

#include "src/decoders/DecoderContext.h"

/** What the speech decoders have in common: they know nothing of pictures. */
class SpeechDecoder : public DecoderContext
{
public:
    std::int32_t DecodeVideo(DecodedPicture* /*picture*/, std::uint32_t* /*state*/,
                             const EncodedChunk* /*chunk*/) override
    {
        return -1;
    }

    std::int32_t QueryFrame(DecodedPicture* /*picture*/, std::int32_t /*version*/) override
    {
        return unsupported;
    }

protected:
    ~SpeechDecoder() = default;
};
