#pragma once

/**
 * @file
 * The decoder of ITU-T G.722.1: 7 kHz audio at 16 kHz, frames of 20 ms, 320 samples, at 24 and 32 kbit/s.
 *
 *   bits --> envelope --> categories --> coefficients --> inverse MLT --> overlap --> PCM
 *
 * Deliberate differences from the Recommendation: no frame counts as bad because of its bits, and 16-bit
 * stores wrap; only the overlap-add saturates. The two low bits of each sample are 0. Used by one thread at a
 * time. No allocation after creation.
 */

#include "src/decoders/GBEngine.h"
#include "src/decoders/SpeechEngine.h"

inline constexpr int G7221FrameSamples = 320; ///< Samples of a frame.
inline constexpr int G7221Regions = 14;       ///< Regions of the spectrum, 500 Hz each.

/** The result of decoding a frame. */
struct G7221FrameResult
{
    std::uint32_t samples;  ///< 320.
    std::uint32_t position; ///< Bytes taken: 0 after a complete frame, which releases them.
};

// A block for the state may be given at any multiple of 4, so no member may need more.
#pragma pack(push, 4)

/** The state of the decoder. */
struct G7221State
{
    GBEngine* reader;                              ///< Owned.
    std::uint16_t randSeed[4];                     ///< State of the noise generator.
    std::uint32_t bitsPerFrame;                    ///< Bit rate / 50.
    std::int16_t bitsLeft;                         ///< Bit budget of the current frame.
    std::uint32_t wordsPerFrame;                   ///< bitsPerFrame / 16.
    std::int16_t sampleBufferA[G7221FrameSamples]; ///< Output of the transform, one of two.
    std::uint32_t paddingA;                        ///< Not used.
    std::int16_t* oldSamples;                      ///< The half of the last frame, 160 samples.
    std::int16_t sampleBufferB[G7221FrameSamples]; ///< Output of the transform, the other.
    std::int16_t* newSamples;                      ///< The buffer of the current frame.
    std::int16_t mltCoefs[G7221FrameSamples];      ///< Coefficients of the current frame.
    std::int16_t magShift;                         ///< Gain exponent of the current frame, -1 to 9.
    std::int16_t oldMagShift;                      ///< Gain exponent of the last good frame.
    std::int16_t oldMltCoefs[G7221FrameSamples];   ///< Coefficients of the last good frame.
    std::uint32_t paddingB;                        ///< Not used.
    std::int16_t* output;                          ///< Samples of the frame.
    std::uint8_t* input;                           ///< Bytes of the frame.
    std::uint32_t inputSize;                       ///< Their number.
    std::uint32_t swapBytes;                       ///< Whether the input's byte pairs are swapped.
    std::uint32_t external;                        ///< Whether the state is in the caller's block.
    std::uint32_t frameLost;                       ///< Whether the next frame is lost.
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

/** Returns the bytes of a block for an engine and its reader. */
std::uint32_t G7221_MemorySize();

/** Makes an engine; returns -1, and sets null, when the options are refused or there is no memory. */
std::int32_t G7221_Create(G7221State** handle, const SpeechEngineOptions* options);

/** Sets up the next frame and swaps its input's byte pairs until it is decoded; -1 for a wrong field. */
std::int32_t G7221_SetupFrame(G7221State* handle, const SpeechFrameSetup* setup);

/**
 * Decodes the frame that was set up.
 *
 * @param handle of G7221_Create
 * @param result receives the result, unless null
 * @return 0; 5 when the input ended inside the frame, which has samples nevertheless; -1 on failure
 */
std::int32_t G7221_DecodeFrame(G7221State* handle, G7221FrameResult* result);

/** Frees the engine and sets the handle to null; -1 for a null handle. */
std::int32_t G7221_Delete(G7221State** handle);
