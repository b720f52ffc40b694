#include "src/decoders/g729a/G729A.h"

#include "src/decoders/g729a/G729AFrameBits.h"
#include "src/decoders/g729a/G729AGains.h"
#include "src/decoders/g729a/G729AHighPass.h"
#include "src/decoders/g729a/G729ALsp.h"
#include "src/decoders/g729a/G729AMath.h"
#include "src/decoders/g729a/G729ANoisePath.h"
#include "src/decoders/g729a/G729ANoiseTable.h"
#include "src/decoders/g729a/G729APostFilter.h"
#include "src/decoders/g729a/G729ASpeechPath.h"
#include "src/decoders/g729a/G729ATables.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <new>

namespace {

constexpr std::uint32_t readerRetries = 500;
constexpr std::uint32_t leastRing = 64;
constexpr std::uintptr_t outputAlignment = 4;
constexpr std::size_t blockAlignment = alignof(G729AState);
constexpr int unfilteredStart = 20;

bool hasType(std::uint32_t type)
{
    return (type & SpeechTypeWord::mask) == SpeechTypeWord::G729A;
}

bool hasField(const G729AOptions& options, G729AOptionField field)
{
    return (options.fields & field) != 0;
}

std::uint32_t readerMode(const G729AOptions& options)
{
    return options.ringMode != 0 ? 4 : 3;
}

/** Ends of the records in a caller's block, each aligned for the next. */
template<class Record>
constexpr std::size_t roomFor()
{
    return (sizeof(Record) + blockAlignment - 1) / blockAlignment * blockAlignment;
}

/** Hands out memory: pieces of the caller's block, or allocated ones. */
class Memory
{
public:
    explicit Memory(void* block)
    {
        const auto address = reinterpret_cast<std::uintptr_t>(block);
        m_external = block != nullptr;
        m_cursor = static_cast<std::uint8_t*>(block) +
                   (m_external ? (blockAlignment - address % blockAlignment) % blockAlignment : 0);
    }

    bool isExternal() const { return m_external; }

    /** What is left of the caller's block; null without one. */
    void* rest() const { return m_external ? m_cursor : nullptr; }

    /** A record of zeros that says where it lies; null without memory. */
    template<class Record>
    Record* make()
    {
        void* place = m_external ? m_cursor : std::malloc(sizeof(Record));
        if (place == nullptr) {
            return nullptr;
        }
        m_cursor += m_external ? roomFor<Record>() : 0;
        auto* record = new (place) Record{};
        record->external = m_external ? 1 : 0;
        return record;
    }

private:
    bool m_external;
    std::uint8_t* m_cursor;
};

template<class Record>
void release(Record* record)
{
    if (record != nullptr && record->external == 0) {
        std::free(record);
    }
}

void releaseAll(G729AState* state)
{
    if (state == nullptr) {
        return;
    }
    release(state->postFilterState);
    release(state->noiseState);
    GBEngine* reader = state->reader; // a member of a packed record has no address to give
    GB_Delete(&reader);
    release(state);
}

GBOptions readerOptions(const G729AOptions& options, void* memory)
{
    const auto pointer = [](std::uint32_t number) {
        return reinterpret_cast<void*>(static_cast<std::uintptr_t>(number));
    };
    GBOptions made{};
    made.type = SpeechTypeWord::GB;
    made.ringSize = options.ringMode != 0 ? options.ringSize : 0;
    made.retries = readerRetries;
    made.mode = readerMode(options);
    if (hasField(options, G729AOptionLocks)) {
        made.lockCallback = options.lockCallback;
        made.unlockCallback = options.unlockCallback;
        made.lockContext = pointer(options.lockContext);
    }
    if (hasField(options, G729AOptionRefill)) {
        made.refillCallback = options.refillCallback;
        made.refillContext = pointer(options.refillContext);
    }
    made.memory = memory;
    return made;
}

/** The records and the reader. @return null, and nothing kept, when one of them cannot be had */
G729AState* assemble(const G729AOptions& options)
{
    Memory memory(options.memory);
    auto* state = memory.make<G729AState>();
    if (state == nullptr) {
        return nullptr;
    }
    bool complete = true;
    if (hasField(options, G729AOptionPostFilter) && options.postFilter != 0) {
        state->postFilterState = memory.make<G729APostFilterState>();
        state->postFilterOn = 1;
        complete = state->postFilterState != nullptr;
    }
    state->noiseState = memory.make<G729ANoiseState>();
    const GBOptions reader = readerOptions(options, memory.rest());
    GBEngine* bits = nullptr;
    complete = complete && state->noiseState != nullptr && GB_Create(&bits, &reader) >= 0;
    state->reader = bits;
    if (!complete) {
        releaseAll(state);
        return nullptr;
    }
    return state;
}

void startHistory(G729AState& state)
{
    using namespace G729ATables;
    constexpr std::int16_t firstLsp[G729AOrder] = {30000, 26000, 21000,  15000,  8000,
                                                   0,     -8000, -15000, -21000, -26000};
    for (int k = 0; k < G729APredictors; ++k) {
        for (int j = 0; j < G729AOrder; ++j) {
            state.noiseFg[0][k][j] = fg[0][k][j];
            state.noiseFg[1][k][j] = wrap16((39320 * fg[0][k][j] + 26214 * fg[1][k][j]) >> 16); // 0.6, 0.4
        }
        state.pastQuaEn[k] = -14336; // -14 dB, Q10 (G.729, clause 3.9.1)
        std::copy_n(freqPrevReset, G729AOrder, state.freqPrev[k]);
    }
    G729ANoiseTable::fill(state);
    std::copy_n(freqPrevReset, G729AOrder, state.prevLsf);
    std::copy_n(firstLsp, G729AOrder, state.lspOld);
    state.seedFer = 21845; // G.729, clause 4.4.4
    state.pastFtyp = G729ASpeech;
    state.shSidSav = 1;
    state.sharp = G729AMinSharp;
    state.oldT0 = 60; // samples
    state.exc = state.oldExc + G729AExcitationPast;
    if (state.postFilterOn != 0) {
        state.postFilterState->pastGain = 4096; // 1, Q12
    }
    std::copy_n(freqPrevReset, G729AOrder, state.noiseState->lspSid); // deliberate: LSF where LSP are due
    state.noiseState->sidGain = 2;
}

bool isOutput(const void* output)
{
    return output != nullptr && reinterpret_cast<std::uintptr_t>(output) % outputAlignment == 0;
}

/** An erased frame is taken for what the last one was. */
void concealType(G729AState& state)
{
    if (state.bfi != 0) {
        state.ftyp = state.pastFtyp == G729ASpeech ? G729ASpeech : G729ANoTransmission;
    }
}

/** The samples without the post-filter. */
void copySynthesis(const G729AState& state)
{
    // Deliberate: from sample 20 on, and so into the excitation that follows in the record.
    constexpr int inFrame = G729AFrameSamples - unfilteredStart;
    std::copy_n(state.synth + unfilteredStart, inFrame, state.output);
    std::copy_n(state.oldExc, unfilteredStart, state.output + inFrame);
}

void moveExcitation(G729AState& state)
{
    std::memmove(state.oldExc, state.oldExc + G729AFrameSamples, G729AExcitationPast * sizeof(std::int16_t));
}

void keepSynthesis(G729AState& state)
{
    std::copy_n(std::end(state.synth) - G729AOrder, G729AOrder, state.synthHistory);
}

} // namespace

std::uint32_t G729A_MemorySize(const SpeechEngineOptions* options)
{
    const std::size_t records =
        roomFor<G729AState>() + roomFor<G729APostFilterState>() + roomFor<G729ANoiseState>();
    return static_cast<std::uint32_t>(records + blockAlignment - 1) +
           GB_MemorySize(readerMode(options->g729a), options->g729a.ringSize);
}

std::int32_t G729A_Create(G729AState** handle, const SpeechEngineOptions* engineOptions)
{
    *handle = nullptr;
    const G729AOptions* options = &engineOptions->g729a;
    const bool isRing = options->ringMode != 0;
    const bool powerOfTwo = (options->ringSize & (options->ringSize - 1)) == 0;
    if (!hasType(options->type) || (isRing && (options->ringSize < leastRing || !powerOfTwo))) {
        return SpeechFailure;
    }
    G729AState* state = assemble(*options);
    if (state == nullptr) {
        return SpeechFailure;
    }
    startHistory(*state);
    SpeechFrameSetup first{};
    first.type = SpeechTypeWord::G729A;
    first.input = options->input;
    first.inputSize = options->inputSize;
    first.output = options->output;
    first.mode = options->frameHeader;
    first.fields = (hasField(*options, G729AOptionInput) && !isRing ? SpeechSetupInput : 0U) |
                   (hasField(*options, G729AOptionOutput) ? SpeechSetupOutput : 0U) |
                   (hasField(*options, G729AOptionFrameHeader) ? SpeechSetupMode : 0U);
    if (G729A_SetupFrame(state, &first) < 0) {
        releaseAll(state);
        return SpeechFailure;
    }
    *handle = state;
    return SpeechSuccess;
}

std::int32_t G729A_SetupFrame(G729AState* handle, const SpeechFrameSetup* setup)
{
    if (!hasType(setup->type)) {
        return SpeechFailure;
    }
    if ((setup->fields & SpeechSetupInput) != 0 &&
        (setup->input == nullptr || setup->inputSize == 0 ||
         GB_SetBuffer(handle->reader, setup->input, setup->inputSize) < 0)) {
        return SpeechFailure;
    }
    if ((setup->fields & SpeechSetupOutput) != 0) {
        if (!isOutput(setup->output)) {
            return SpeechFailure;
        }
        handle->output = static_cast<std::int16_t*>(setup->output);
    }
    if ((setup->fields & SpeechSetupMode) != 0) {
        handle->frameHeader = setup->mode != 0 ? 1 : 0;
    }
    return SpeechSuccess;
}

std::int32_t G729A_DecodeFrame(G729AState* handle, std::uint32_t* consumed)
{
    G729AState& state = *handle;
    if (state.output == nullptr || state.reader->buffer == nullptr || GB_Prime(state.reader) < 0 ||
        G729AFrameBits::unpack(state) < 0) {
        return SpeechFailure;
    }
    if (consumed != nullptr) {
        *consumed = GB_Position(state.reader);
    }
    GB_Release(state.reader);

    if (state.ftyp == G729ASpeech) {
        std::int16_t& parity = state.parm[G729AFrameBits::LagParity];
        parity = G729AFrameBits::parityError(state.parm[G729AFrameBits::Lag1], parity);
    }
    concealType(state);
    G729AFrameModel model{};
    if (state.ftyp == G729ASpeech) {
        G729ASpeechPath::decode(state, model);
    } else {
        G729ANoisePath::decode(state, model);
    }
    if (state.bfi == 0) {
        G729AGains::saveEnergy(state);
    }
    moveExcitation(state);
    state.pastFtyp = state.ftyp;
    if (state.postFilterOn != 0) {
        G729APostFilter::filterFrame(state, model);
    } else {
        copySynthesis(state);
    }
    keepSynthesis(state);
    G729AHighPass::filterFrame(state);
    G729ANoiseTable::renew(state);
    return SpeechSuccess;
}

std::int32_t G729A_Delete(G729AState** handle)
{
    if (handle == nullptr || *handle == nullptr) {
        return SpeechFailure;
    }
    releaseAll(*handle);
    *handle = nullptr;
    return SpeechSuccess;
}
