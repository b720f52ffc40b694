#pragma once

/**
 * @file
 * The options, frames and status codes of the speech engines.
 */

#include <cstddef>
#include <cstdint>

/** Status codes of the engines. */
enum SpeechStatus : std::int32_t
{
    SpeechSuccess = 0,   ///< Done.
    SpeechFailure = -1,  ///< An argument was refused, or the bit stream ended inside a G.729A frame.
    SpeechExhausted = 5, ///< The bit stream ended inside a G.722.1 frame; the frame counts as decoded.
};

/** The first word of each record; only the bits of the mask are compared. */
namespace SpeechTypeWord {

inline constexpr std::uint32_t mask = 0x00FF00FF; ///< The bits that are compared.
inline constexpr std::uint32_t G729A = 1;         ///< The G.729A engine.
inline constexpr std::uint32_t G7221 = 4;         ///< The G.722.1 engine.
inline constexpr std::uint32_t GB = 5;            ///< The bit reader, GBEngine.

} // namespace SpeechTypeWord

/** The valid fields of a SpeechFrameSetup; the others keep the engine's earlier setting. */
enum SpeechSetupField : std::uint32_t
{
    SpeechSetupInput = 4,  ///< input and inputSize.
    SpeechSetupOutput = 8, ///< output.
    SpeechSetupMode = 16,  ///< mode.
    SpeechSetupLost = 32,  ///< lost; G.722.1 only.
};

/** The input and output of one frame. */
struct SpeechFrameSetup
{
    std::uint32_t type;   ///< SpeechTypeWord.
    std::uint32_t fields; ///< SpeechSetupField.
    /** Compressed bytes; not null. G.722.1 swaps them in pairs until the frame is decoded. */
    std::uint8_t* input;
    std::uint32_t inputSize; ///< Bytes; not 0.
    std::uint32_t reserved;  ///< Not read.
    void* output;            ///< PCM; not null, a multiple of 4.
    std::uint32_t mode; ///< G.722.1: bit/s, 24000 or 32000. G.729A: whether frames start with a type byte.
    std::uint32_t lost; ///< G.722.1: not 0 for a lost frame.
};
static_assert(sizeof(void*) != 8 || offsetof(SpeechFrameSetup, output) == 24);
static_assert(sizeof(void*) != 8 || sizeof(SpeechFrameSetup) == 40);

/** Locks or unlocks the ring of a bit reader. */
using SpeechLockCallback = void (*)(void* context);
/** Appends bytes to the ring of a bit reader. */
using SpeechRefillCallback = std::int32_t (*)(void* context);

/** The options of the G.722.1 engine. */
struct G7221Options
{
    std::uint32_t type;   ///< SpeechTypeWord::G7221.
    std::uint32_t fields; ///< Not read.
    void* memory;         ///< Block of G7221_MemorySize bytes, at a multiple of 4; null to allocate.
    SpeechLockCallback lockCallback;     ///< Of the bit reader; null for none.
    SpeechLockCallback unlockCallback;   ///< Of the bit reader; null for none.
    void* lockContext;                   ///< Argument of the two.
    SpeechRefillCallback refillCallback; ///< Of the bit reader; null for none.
    void* refillContext;                 ///< Its argument.
    std::uint32_t byteOrder;             ///< 0: swap each pair of input bytes; 1: use them unchanged.
    std::uint32_t ringSize;              ///< Of the GB Engine.
    void* output;                        ///< Initial output.
    std::uint32_t bitRate;               ///< 24000 or 32000.
};
static_assert(sizeof(void*) != 8 || offsetof(G7221Options, byteOrder) == 56);
static_assert(sizeof(void*) != 8 || offsetof(G7221Options, bitRate) == 72);

/** The valid fields of G729AOptions. */
enum G729AOptionField : std::uint32_t
{
    G729AOptionLocks = 1,        ///< lockCallback and unlockCallback.
    G729AOptionRefill = 2,       ///< refillCallback.
    G729AOptionInput = 4,        ///< input and inputSize.
    G729AOptionOutput = 8,       ///< output.
    G729AOptionFrameHeader = 16, ///< frameHeader.
    G729AOptionPostFilter = 32,  ///< postFilter.
};

/** The options of the G.729A engine. */
struct G729AOptions
{
    std::uint32_t type;                ///< SpeechTypeWord::G729A.
    std::uint32_t fields;              ///< G729AOptionField.
    void* memory;                      ///< Block of G729A_MemorySize bytes, at any address; null to allocate.
    SpeechLockCallback lockCallback;   ///< Of the bit reader.
    SpeechLockCallback unlockCallback; ///< Of the bit reader.
    SpeechRefillCallback refillCallback; ///< Of the bit reader.
    std::uint32_t lockContext;           ///< A number, deliberately; the callbacks get it as a pointer.
    std::uint32_t refillContext;         ///< A number, deliberately; the callback gets it as a pointer.
    std::uint32_t ringMode;              ///< Not 0: the GB Engine works on a ring.
    std::uint32_t ringSize;              ///< Of the ring, in bytes: at least 64, a power of two.
    std::uint8_t* input;                 ///< First buffer, without a ring.
    std::uint32_t inputSize;             ///< Its bytes.
    void* output;                        ///< Initial output.
    std::uint32_t frameHeader;           ///< Not 0: frames start with a type byte.
    std::uint32_t postFilter;            ///< Not 0: the post-filter of Annex A is run.
};
static_assert(sizeof(void*) != 8 || offsetof(G729AOptions, lockContext) == 40);
static_assert(sizeof(void*) != 8 || offsetof(G729AOptions, input) == 56);
static_assert(sizeof(void*) != 8 || offsetof(G729AOptions, postFilter) == 84);

/** The options of either engine. Both views start with `type`, which says which of them is used. */
union SpeechEngineOptions {
    G729AOptions g729a; ///< The longer view is first, so that {} clears all.
    G7221Options g7221; ///< The view of G.722.1.
};
static_assert(sizeof(SpeechEngineOptions) == sizeof(G729AOptions));
