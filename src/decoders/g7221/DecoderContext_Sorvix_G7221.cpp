#include "src/decoders/g7221/DecoderContext_Sorvix_G7221.h"

#include "src/decoders/DecoderFactories.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace {

constexpr std::uint32_t frameSize = G7221FrameSamples * sizeof(std::int16_t); // bytes of PCM
constexpr std::uint32_t frameBytesOf32000 = 80;

// A frame is read for its first 80 bytes at most, with a look ahead of a few: so much of it is handed over.
constexpr std::uint32_t maxInput = 88;
constexpr std::uint32_t inputRoom = maxInput + 8;

} // namespace

std::int32_t DecoderContext_Sorvix_G7221::DecodeAudio(std::uint8_t* pcm, std::uint32_t* size,
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
        // A copy, with zeros behind the packet: the engine swaps bytes, and the last frame may be cut short.
        std::uint8_t input[inputRoom] = {};
        std::memcpy(input, source, static_cast<std::size_t>(std::min<std::int64_t>(remaining, inputRoom)));
        SpeechFrameSetup setup{};
        setup.type = SpeechTypeWord::G7221;
        setup.fields = SpeechSetupInput | SpeechSetupOutput | SpeechSetupMode;
        setup.input = input;
        setup.inputSize = std::min(frameBytes, maxInput);
        setup.output = pcm + written;
        setup.mode = frameBytes == frameBytesOf32000 ? 32000 : 24000;
        std::int32_t status = G7221_SetupFrame(m_engine, &setup);
        if (status >= 0) {
            status = G7221_DecodeFrame(m_engine, &m_result);
        }
        if (status < 0) {
            return status;
        }
        source += std::min<std::int64_t>(frameBytes, remaining);
        remaining -= frameBytes;
        written += frameSize;
    }
    *size = written;
    return SpeechSuccess;
}

void DecoderContext_Sorvix_G7221::Release()
{
    if (auto* self = releasedObject(this)) {
        G7221_Delete(&self->m_engine);
        delete self;
    }
}

DecoderContext* CreateDecoderSorvixG7221()
{
    SpeechEngineOptions options{};
    options.g7221.type = SpeechTypeWord::G7221;
    options.g7221.fields = 16; // deliberate, though the engine does not read it
    options.g7221.bitRate = 24000;
    G7221State* engine = nullptr;
    if (G7221_Create(&engine, &options) < 0) {
        return nullptr;
    }
    auto* decoder = new (std::nothrow) DecoderContext_Sorvix_G7221(engine);
    if (decoder == nullptr) {
        G7221_Delete(&engine);
    }
    return decoder;
}
