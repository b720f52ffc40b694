#include "src/decoders/g7221/G7221.h"

#include "src/decoders/g7221/G7221FrameBits.h"
#include "src/decoders/g7221/G7221Synthesis.h"

#include <cstdio>
#include <cstdlib>
#include <new>
#include <utility>

namespace {

constexpr std::uint32_t framesPerSecond = 50;
constexpr std::uint32_t readerRetries = 500;
constexpr std::uint32_t readerMode = 3;
constexpr int halfFrame = G7221FrameSamples / 2;
constexpr std::uint16_t sampleMask = 0xFFFC;
constexpr std::uintptr_t alignment = 4; // of the output, and of a given block

constexpr std::size_t readerOffset = sizeof(G7221State); // in a given block

bool isBitRate(std::uint32_t bitRate)
{
    return bitRate == 24000 || bitRate == 32000;
}

void setBitRate(G7221State& state, std::uint32_t bitRate)
{
    state.bitsPerFrame = bitRate / framesPerSecond;
    state.wordsPerFrame = state.bitsPerFrame >> 4U;
}

/** Turns 16-bit words with the low byte first into bytes in the order of the bits, and back. */
void swapPairs(std::uint8_t* bytes, std::uint32_t size)
{
    for (std::uint32_t i = 0; i < size; i += 2) {
        std::swap(bytes[i], bytes[i + 1]); // deliberate: an odd size takes the byte behind along
    }
}

GBOptions readerOptions(const G7221Options& options, void* memory)
{
    GBOptions made{};
    made.type = SpeechTypeWord::GB;
    made.ringSize = options.ringSize;
    made.retries = readerRetries;
    made.lockContext = options.lockContext;
    made.refillContext = options.refillContext;
    made.mode = readerMode;
    made.refillCallback = options.refillCallback;
    made.lockCallback = options.lockCallback;
    made.unlockCallback = options.unlockCallback;
    made.memory = memory;
    return made;
}

} // namespace

std::uint32_t G7221_MemorySize()
{
    return static_cast<std::uint32_t>(readerOffset) + GB_MemorySize(readerMode, 0);
}

std::int32_t G7221_Create(G7221State** handle, const SpeechEngineOptions* engineOptions)
{
    *handle = nullptr;
    const G7221Options* options = &engineOptions->g7221;
    if ((options->type & SpeechTypeWord::mask) != SpeechTypeWord::G7221 || !isBitRate(options->bitRate) ||
        options->byteOrder > 1 || reinterpret_cast<std::uintptr_t>(options->memory) % alignment != 0) {
        return SpeechFailure;
    }
    const bool external = options->memory != nullptr;
    void* block = external ? options->memory : std::malloc(sizeof(G7221State));
    if (block == nullptr) {
        return SpeechFailure;
    }
    auto* state = new (block) G7221State{};
    const GBOptions reader =
        readerOptions(*options, external ? static_cast<std::uint8_t*>(block) + readerOffset : nullptr);
    GBEngine* bits = nullptr; // a member of a packed record has no address to give
    if (GB_Create(&bits, &reader) < 0) {
        std::fputs("Initialize GB Engine object fail!!\n", stdout);
        if (!external) {
            std::free(block);
        }
        return SpeechFailure;
    }
    state->reader = bits;
    state->external = external ? 1 : 0;
    state->swapBytes = options->byteOrder == 0 ? 1 : 0;
    for (std::uint16_t& seed : state->randSeed) {
        seed = 1;
    }
    setBitRate(*state, options->bitRate);
    state->output = static_cast<std::int16_t*>(options->output);
    state->oldSamples = state->sampleBufferA + halfFrame;
    state->newSamples = state->sampleBufferB;
    *handle = state;
    return SpeechSuccess;
}

std::int32_t G7221_SetupFrame(G7221State* handle, const SpeechFrameSetup* setup)
{
    if ((setup->type & SpeechTypeWord::mask) != SpeechTypeWord::G7221) {
        return SpeechFailure;
    }
    if ((setup->fields & SpeechSetupInput) != 0) {
        if (setup->input == nullptr || setup->inputSize == 0 || handle->swapBytes == 0) {
            return SpeechFailure;
        }
        swapPairs(setup->input, setup->inputSize);
        if (GB_SetBuffer(handle->reader, setup->input, setup->inputSize) < 0 ||
            GB_Prime(handle->reader) < 0) {
            return SpeechFailure;
        }
        handle->input = setup->input;
        handle->inputSize = setup->inputSize;
    }
    if ((setup->fields & SpeechSetupOutput) != 0) {
        if (setup->output == nullptr || reinterpret_cast<std::uintptr_t>(setup->output) % alignment != 0) {
            return SpeechFailure;
        }
        handle->output = static_cast<std::int16_t*>(setup->output);
    }
    if ((setup->fields & SpeechSetupMode) != 0) {
        if (!isBitRate(setup->mode)) {
            return SpeechFailure;
        }
        setBitRate(*handle, setup->mode);
    }
    if ((setup->fields & SpeechSetupLost) != 0) {
        handle->frameLost = setup->lost;
    }
    return SpeechSuccess;
}

std::int32_t G7221_DecodeFrame(G7221State* handle, G7221FrameResult* result)
{
    if (result != nullptr) {
        result->samples = 0;
    }
    if (handle->input == nullptr || handle->output == nullptr || GB_Prime(handle->reader) < 0) {
        return SpeechFailure;
    }
    handle->bitsLeft = static_cast<std::int16_t>(handle->bitsPerFrame);
    const std::int32_t status = G7221FrameBits(*handle).DecodeFrameBits();
    // Deliberate: a frame that failed is heard all the same, on whatever the coefficients hold.
    G7221Synthesis::CoefsToSamples(*handle);
    std::int16_t* next = handle->oldSamples - halfFrame;
    handle->oldSamples = handle->newSamples + halfFrame;
    handle->newSamples = next;
    for (int i = 0; i < G7221FrameSamples; ++i) {
        handle->output[i] =
            static_cast<std::int16_t>(static_cast<std::uint16_t>(handle->output[i]) & sampleMask);
    }
    if (result != nullptr) {
        result->samples = G7221FrameSamples;
        result->position = GB_Position(handle->reader);
    }
    if (handle->swapBytes != 0 && handle->inputSize > 0) {
        swapPairs(handle->input, handle->inputSize);
    }
    return status;
}

std::int32_t G7221_Delete(G7221State** handle)
{
    if (handle == nullptr || *handle == nullptr) {
        return SpeechFailure;
    }
    GBEngine* reader = (*handle)->reader;
    reader->retries = 0;
    GB_Delete(&reader);
    if ((*handle)->external == 0) {
        std::free(*handle);
    }
    *handle = nullptr;
    return SpeechSuccess;
}
