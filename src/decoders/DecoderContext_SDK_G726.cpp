#include "src/decoders/DecoderContext_SDK_G726.h"

#include "src/decoders/DecoderFactories.h"
#include "src/decoders/G726.h"
#include "src/decoders/PcmBlock.h"

#include <algorithm>
#include <new>

std::int32_t DecoderContext_SDK_G726::DecodeAudio(std::uint8_t* pcm, std::uint32_t* size,
                                                  const EncodedChunk* chunk)
{
    constexpr std::int64_t maxSamples = pcmBlockSize / 2;
    const std::int64_t maxBytes = (maxSamples * m_state->codeBits - m_state->bitCount) / 8;
    const auto bytes = static_cast<std::int32_t>(std::min<std::int64_t>(chunk->size, maxBytes));
    // Deliberate: the room that the caller declares is not respected.
    *size = static_cast<std::uint32_t>(G726_DecodeBytes(m_state, pcm, chunk->data, bytes)) * 2;
    return 0;
}

void DecoderContext_SDK_G726::Release()
{
    if (auto* self = releasedObject(this)) {
        G726_Release(self->m_state);
        delete self;
    }
}

namespace {

DecoderContext* create(std::uint32_t bitRate, std::int32_t packing)
{
    G726State* state = G726_Create(nullptr, static_cast<std::int32_t>(bitRate), G726Linear, packing);
    if (state == nullptr) {
        return nullptr;
    }
    auto* decoder = new (std::nothrow) DecoderContext_SDK_G726(state);
    if (decoder == nullptr) {
        G726_Release(state);
    }
    return decoder;
}

} // namespace

DecoderContext* CreateDecoderG726Left(std::uint32_t bitRate)
{
    return create(bitRate, G726PackingLeft);
}

DecoderContext* CreateDecoderG726Right(std::uint32_t bitRate)
{
    return create(bitRate, G726PackingRight);
}
