#pragma once

#include "src/decoders/DecoderContext.h"

/** The base of the speech decoders, which do not decode pictures. */
class SpeechDecoder : public DecoderContext
{
public:
    /** Returns -1. */
    std::int32_t DecodeVideo(DecodedPicture* /*picture*/, std::uint32_t* /*state*/,
                             const EncodedChunk* /*chunk*/) override
    {
        return -1;
    }

    /** Returns unsupported. */
    std::int32_t QueryFrame(DecodedPicture* /*picture*/, std::int32_t /*version*/) override
    {
        return unsupported;
    }

protected:
    ~SpeechDecoder() = default;
};
