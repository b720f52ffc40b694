#pragma once

/**
 * The decoder of ITU-T G.722.1: 7 kHz audio at 16 kHz, frames of 20 ms, 320 samples, at 24 and 32 kbit/s.
 *
 *   bits --> envelope --> categories --> coefficients --> inverse MLT --> overlap --> PCM
 *
 * Departs from the Recommendation on purpose: no frame is judged bad by its bits, and 16-bit stores wrap;
 * only the overlap-add saturates. The two low bits of each sample are 0. One thread at a time; no allocation
 * a frame.
 */

#include "src/decoders/GBEngine.h"
#include "src/decoders/SpeechEngine.h"

inline constexpr int G7221FrameSamples = 320;
inline constexpr int G7221Regions = 14;

/** What a frame gave. */
struct G7221FrameResult
{
    std::uint32_t samples;  ///< 320.
    std::uint32_t position; ///< Bytes taken: 0 after a frame that ran to its end.
};

// A block for the state may be given at any multiple of 4, so no member may need more.
#pragma pack(push, 4)

/** All that the decoder remembers. */
struct G7221State
{
    GBEngine* reader;
    std::uint16_t randSeed[4];
    std::uint32_t bitsPerFrame;
    std::int16_t bitsLeft; ///< Budget of the current frame.
    std::uint32_t wordsPerFrame;
    std::int16_t sampleBufferA[G7221FrameSamples];
    std::uint32_t paddingA;
    std::int16_t* oldSamples; ///< The half kept from the last frame, 160 samples.
    std::int16_t sampleBufferB[G7221FrameSamples];
    std::int16_t* newSamples; ///< The buffer to fill now.
    std::int16_t mltCoefs[G7221FrameSamples];
    std::int16_t magShift; ///< -1 to 9.
    std::int16_t oldMagShift;
    std::int16_t oldMltCoefs[G7221FrameSamples]; ///< Of the last good frame.
    std::uint32_t paddingB;
    std::int16_t* output;
    std::uint8_t* input;
    std::uint32_t inputSize;
    std::uint32_t swapBytes;
    std::uint32_t external;
    std::uint32_t frameLost;
};
static_assert(sizeof(void*) != 8 || offsetof(G7221State, bitsPerFrame) == 16);
static_assert(sizeof(void*) != 8 || offsetof(G7221State, sampleBufferA) == 28);
static_assert(sizeof(void*) != 8 || offsetof(G7221State, oldSamples) == 672);
static_assert(sizeof(void*) != 8 || offsetof(G7221State, newSamples) == 1320);
static_assert(sizeof(void*) != 8 || offsetof(G7221State, oldMltCoefs) == 1972);
static_assert(sizeof(void*) != 8 || offsetof(G7221State, output) == 2616);
static_assert(sizeof(void*) != 8 || offsetof(G7221State, frameLost) == 2644);
static_assert(sizeof(void*) != 8 || sizeof(G7221State) == 2648);
static_assert(alignof(G7221State) == 4);

#pragma pack(pop)

/** Bytes of a block for an engine and its reader. */
std::uint32_t G7221_MemorySize();

/** Makes an engine. @return 0; -1, and a null handle, when options are refused or there is no memory */
std::int32_t G7221_Create(G7221State** handle, const SpeechEngineOptions* options);

/** Sets the next frame up; swaps the input's byte pairs, until it is decoded. */
std::int32_t G7221_SetupFrame(G7221State* handle, const SpeechFrameSetup* setup);

/** Decodes a frame. @return 0; 5 when the input ended inside of it, which gives samples all the same; -1 */
std::int32_t G7221_DecodeFrame(G7221State* handle, G7221FrameResult* result);

/** Frees the engine and nulls the handle; -1 for a null handle. */
std::int32_t G7221_Delete(G7221State** handle);
