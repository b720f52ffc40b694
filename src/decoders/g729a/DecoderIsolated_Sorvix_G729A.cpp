#include "src/decoders/g729a/DecoderIsolated_Sorvix_G729A.h"

#include "src/decoders/DecoderFactories.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace {

constexpr std::uint32_t frameSize = G729AFrameSamples * sizeof(std::int16_t); // bytes of PCM
constexpr std::uint32_t maxFrame = 11;
constexpr std::uint32_t inputRoom = maxFrame + 3; // and what the reader looks ahead

} // namespace

std::int32_t DecoderIsolated_Sorvix_G729A::DecodeAudio(std::uint8_t* pcm, std::uint32_t* size,
                                                       const EncodedChunk* chunk)
{
    if (chunk->frames == 0) {
        return SpeechFailure; // the size of the frames would be unknown
    }
    const std::uint32_t frameBytes = chunk->size / chunk->frames;
    std::int64_t remaining = chunk->size;
    const std::uint8_t* source = chunk->data;
    std::uint32_t written = 0;
    while (remaining > 0) {
        if (*size - written < frameSize) {
            return SpeechFailure;
        }
        // A copy, with zeros behind the packet: the last frame may be cut short.
        std::uint8_t input[inputRoom] = {};
        std::memcpy(input, source, static_cast<std::size_t>(std::min<std::int64_t>(remaining, inputRoom)));
        SpeechFrameSetup setup{};
        setup.type = SpeechTypeWord::G729A;
        setup.fields = SpeechSetupInput | SpeechSetupOutput | SpeechSetupMode;
        setup.input = input;
        setup.inputSize = std::min(frameBytes, maxFrame);
        setup.output = pcm + written;
        setup.mode = 1;
        std::int32_t status = G729A_SetupFrame(m_engine, &setup);
        if (status >= 0) {
            status = G729A_DecodeFrame(m_engine, m_result);
        }
        if (status < 0) {
            return status;
        }
        source += std::min<std::int64_t>(m_result[0], remaining);
        remaining -= m_result[0];
        written += frameSize;
    }
    *size = written;
    return SpeechSuccess;
}

void DecoderIsolated_Sorvix_G729A::Release()
{
    if (auto* self = releasedObject(this)) {
        G729A_Delete(&self->m_engine);
        delete self;
    }
}

DecoderContext* CreateDecoderSorvixG729A()
{
    SpeechEngineOptions options{};
    options.g729a.type = SpeechTypeWord::G729A;
    options.g729a.fields = G729AOptionPostFilter;
    options.g729a.postFilter = 1;
    G729AState* engine = nullptr;
    if (G729A_Create(&engine, &options) < 0) {
        return nullptr;
    }
    auto* decoder = new (std::nothrow) DecoderIsolated_Sorvix_G729A(engine);
    if (decoder == nullptr) {
        G729A_Delete(&engine);
    }
    return decoder;
}
