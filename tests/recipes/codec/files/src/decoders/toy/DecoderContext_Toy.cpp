#include "src/decoders/toy/DecoderContext_Toy.h"

#include <new>

std::int32_t DecoderContext_Toy::DecodeAudio(std::uint8_t* pcm, std::uint32_t* size,
                                             const EncodedChunk* chunk)
{
    if (chunk->size > *size / 2) {
        return -1;
    }
    for (std::uint32_t i = 0; i < chunk->size; ++i) {
        pcm[2 * i] = 0;
        pcm[2 * i + 1] = chunk->data[i];
    }
    *size = 2 * chunk->size;
    return 0;
}

void DecoderContext_Toy::Release()
{
    delete releasedObject(this);
}

DecoderContext* CreateDecoderToy()
{
    return new (std::nothrow) DecoderContext_Toy;
}
