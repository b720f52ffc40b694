#pragma once

/** The records by which a speech engine is made and driven, and its status codes. */

#include <cstddef>
#include <cstdint>

/** Status codes of the engines. */
enum SpeechStatus : std::int32_t
{
    SpeechSuccess = 0,
    SpeechFailure = -1,
    SpeechExhausted = 5, ///< The bit stream ended inside of a G.722.1 frame; the frame counts as decoded.
};

/** The first word of each record; only the bits of the mask are compared. */
namespace SpeechTypeWord {

inline constexpr std::uint32_t mask = 0x00FF00FF;
inline constexpr std::uint32_t G729A = 1;
inline constexpr std::uint32_t G7221 = 4;
inline constexpr std::uint32_t GB = 5;

} // namespace SpeechTypeWord

/** What of a SpeechFrameSetup is valid; the rest leaves the engine as it is. */
enum SpeechSetupField : std::uint32_t
{
    SpeechSetupInput = 4,
    SpeechSetupOutput = 8,
    SpeechSetupMode = 16,
    SpeechSetupLost = 32, ///< G.722.1 only.
};

/** One frame. */
struct SpeechFrameSetup
{
    std::uint32_t type;   ///< SpeechTypeWord.
    std::uint32_t fields; ///< SpeechSetupField.
    std::uint8_t*
        input; ///< Compressed bytes; not null. G.722.1 swaps them in pairs until the frame is decoded.
    std::uint32_t inputSize; ///< Bytes; not 0.
    std::uint32_t reserved;
    void* output;       ///< PCM; not null, a multiple of 4.
    std::uint32_t mode; ///< G.722.1: bit/s, 24000 or 32000. G.729A: whether frames start with a type byte.
    std::uint32_t lost; ///< G.722.1: not 0 for a frame that did not arrive.
};
static_assert(sizeof(void*) != 8 || offsetof(SpeechFrameSetup, output) == 24);
static_assert(sizeof(void*) != 8 || sizeof(SpeechFrameSetup) == 40);

using SpeechLockCallback = void (*)(void* context);
using SpeechRefillCallback = std::int32_t (*)(void* context);

/** The view that G.722.1 has of SpeechEngineOptions. */
struct G7221Options
{
    std::uint32_t type;   ///< SpeechTypeWord::G7221.
    std::uint32_t fields; ///< Not read.
    void* memory;         ///< Block of G7221_MemorySize bytes, at a multiple of 4; null to allocate.
    SpeechLockCallback lockCallback;
    SpeechLockCallback unlockCallback;
    void* lockContext;
    SpeechRefillCallback refillCallback;
    void* refillContext;
    std::uint32_t byteOrder; ///< 0: swap each pair of input bytes; 1: use them as they stand.
    std::uint32_t ringSize;  ///< Of the GB Engine.
    void* output;            ///< Initial output.
    std::uint32_t bitRate;   ///< 24000 or 32000.
};
static_assert(sizeof(void*) != 8 || offsetof(G7221Options, byteOrder) == 56);
static_assert(sizeof(void*) != 8 || offsetof(G7221Options, bitRate) == 72);

/** What of G729AOptions is valid. */
enum G729AOptionField : std::uint32_t
{
    G729AOptionLocks = 1,
    G729AOptionRefill = 2,
    G729AOptionInput = 4,
    G729AOptionOutput = 8,
    G729AOptionFrameHeader = 16,
    G729AOptionPostFilter = 32,
};

/** The view that G.729A has of SpeechEngineOptions. */
struct G729AOptions
{
    std::uint32_t type;   ///< SpeechTypeWord::G729A.
    std::uint32_t fields; ///< G729AOptionField.
    void* memory;         ///< Block of G729A_MemorySize bytes, at any address; null to allocate.
    SpeechLockCallback lockCallback;
    SpeechLockCallback unlockCallback;
    SpeechRefillCallback refillCallback;
    std::uint32_t lockContext; ///< Numbers, deliberately; the callbacks get them as pointers.
    std::uint32_t refillContext;
    std::uint32_t ringMode; ///< Not 0: the GB Engine works on a ring.
    std::uint32_t ringSize; ///< Of the ring, in bytes: at least 64, a power of two.
    std::uint8_t* input;    ///< First buffer, without a ring.
    std::uint32_t inputSize;
    void* output; ///< Initial output.
    std::uint32_t frameHeader;
    std::uint32_t postFilter; ///< Not 0: the post-filter of Annex A is run.
};
static_assert(sizeof(void*) != 8 || offsetof(G729AOptions, lockContext) == 40);
static_assert(sizeof(void*) != 8 || offsetof(G729AOptions, input) == 56);
static_assert(sizeof(void*) != 8 || offsetof(G729AOptions, postFilter) == 84);

/** How an engine is made. Both views start with `type`, which says which of them holds. */
union SpeechEngineOptions {
    G729AOptions g729a; // the longer one first, so that {} clears all
    G7221Options g7221;
};
static_assert(sizeof(SpeechEngineOptions) == sizeof(G729AOptions));
