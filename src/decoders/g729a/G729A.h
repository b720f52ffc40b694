#pragma once

/**
 * The decoder of ITU-T G.729 Annex A with the comfort noise of Annex B: speech at 8 kHz, frames of 10 ms,
 * 80 samples, 8 kbit/s.
 *
 *   bits -+-> speech: LSP, pitch, fixed codebook, gains --+-> synthesis --> post-filter --> high-pass --> PCM
 *         +-> noise: SID, gain, random excitation --------+
 *
 * Departs from the Recommendation on purpose: a frame starts with a byte that tells its type, and arithmetic
 * wraps where the Recommendation's operators saturate, except in the places that say "clamp". One thread at
 * a time; no allocation a frame.
 */

#include "src/decoders/GBEngine.h"
#include "src/decoders/SpeechEngine.h"

inline constexpr int G729AFrameSamples = 80;
inline constexpr int G729ASubframeSamples = 40;
inline constexpr int G729ASubframes = 2;
inline constexpr int G729AOrder = 10;           ///< Of the linear prediction.
inline constexpr int G729APredictors = 4;       ///< Rows of the moving average over LSF and over gains.
inline constexpr int G729AExcitationPast = 156; ///< Two more than the longest lag and its filter reach back.
inline constexpr int G729ANoiseWords = 966;     ///< What a frame of noise draws.
inline constexpr int G729AParameters = 11;
inline constexpr int G729AResidualPast = 144;

/** What a frame is, as the decoder goes on with it. */
enum G729AFrameType : std::int16_t
{
    G729ANoTransmission = 0,
    G729ASpeech = 1,
    G729ASid = 2,
};

// A block for these records may be given at any address and is used from a multiple of 4 on, so no member may
// need more.
#pragma pack(push, 4)

/** The memory of the post-filter. */
struct G729APostFilterState
{
    std::uint32_t external; ///< Whether the record lies in the caller's block.
    std::int16_t res2Buffer[G729AResidualPast + G729ASubframeSamples];
    std::int16_t scaledRes2Buffer[G729AResidualPast + G729ASubframeSamples];
    std::int16_t memSynPst[G729AOrder];
    std::int16_t pastGain; ///< Q12.
    std::int16_t memPre;   ///< Last input of the tilt filter.
};

/** The memory of the comfort noise. */
struct G729ANoiseState
{
    std::uint32_t external;
    std::int16_t lspSid[G729AOrder]; ///< Starts, deliberately, as LSF values.
    std::int16_t curGain;
    std::int16_t sidGain;
};

/** All that the decoder remembers. */
struct G729AState
{
    std::uint32_t external;
    std::uint32_t paddingA;
    GBEngine* reader;
    std::int16_t* output;
    std::uint32_t frameHeader;                            ///< Whether frames start with a type byte.
    std::uint32_t excErr[4];                              ///< Of an encoder; never changes here.
    std::int16_t noiseFg[2][G729APredictors][G729AOrder]; ///< MA predictor of SID frames, Q15.
    std::int16_t pastQuaEn[G729APredictors];              ///< Quantised energies, dB in Q10, newest first.
    std::int16_t hpfY1Lo;
    std::int16_t hpfY1Hi;
    std::int16_t hpfY2Lo;
    std::int16_t hpfY2Hi;
    std::int16_t hpfX1;
    std::int16_t hpfX2;
    std::int16_t freqPrev[G729APredictors][G729AOrder]; ///< LSF history, Q13, newest first.
    std::int16_t synthHistory[G729AOrder];              ///< Continued by synth.
    std::int16_t synth[G729AFrameSamples];
    std::int16_t oldExc[G729AExcitationPast + G729AFrameSamples];
    std::int16_t noiseTable[G729ANoiseWords]; ///< The next draws; the last word is the seed of what follows.
    std::int16_t prevMa;
    std::int16_t prevLsf[G729AOrder];
    std::uint16_t seedFer; ///< Of the codes that conceal an erasure.
    std::int16_t pastFtyp;
    alignas(4) std::int16_t lspOld[G729AOrder]; ///< Q15.
    std::int16_t sidSav;                        ///< Energy of the last good excitation,
    std::int16_t shSidSav;                      ///< and its exponent.
    std::int16_t memSyn[G729AOrder];
    std::int16_t gainCode;  ///< Q1.
    std::int16_t gainPitch; ///< Q14.
    std::int16_t bfi;
    std::int16_t ftyp; ///< G729AFrameType.
    std::int16_t parm[G729AParameters];
    std::int16_t badLsf; ///< Never set.
    std::int16_t sharp;  ///< Q14.
    std::int16_t oldT0;
    std::uint32_t paddingB;
    std::int16_t* exc; ///< Where this frame's excitation starts in oldExc.
    std::uint32_t postFilterOn;
    std::uint32_t paddingC;
    G729APostFilterState* postFilterState;
    G729ANoiseState* noiseState;
};
static_assert(offsetof(G729AState, synth) ==
              offsetof(G729AState, synthHistory) + G729AOrder * sizeof(std::int16_t));
static_assert(offsetof(G729AState, lspOld) % 4 == 0 && offsetof(G729ANoiseState, lspSid) % 4 == 0);
static_assert(sizeof(void*) != 8 || offsetof(G729AState, reader) == 8);
static_assert(sizeof(void*) != 8 || offsetof(G729AState, output) == 16);
static_assert(sizeof(void*) != 8 || offsetof(G729AState, noiseFg) == 44);
static_assert(sizeof(void*) != 8 || offsetof(G729AState, freqPrev) == 224);
static_assert(sizeof(void*) != 8 || offsetof(G729AState, synth) == 324);
static_assert(sizeof(void*) != 8 || offsetof(G729AState, oldExc) == 484);
static_assert(sizeof(void*) != 8 || offsetof(G729AState, noiseTable) == 956);
static_assert(sizeof(void*) != 8 || offsetof(G729AState, lspOld) == 2916);
static_assert(sizeof(void*) != 8 || offsetof(G729AState, parm) == 2968);
static_assert(sizeof(void*) != 8 || offsetof(G729AState, exc) == 3000);
static_assert(sizeof(void*) != 8 || offsetof(G729AState, noiseState) == 3024);
static_assert(sizeof(void*) != 8 || sizeof(G729AState) == 3032);
static_assert(alignof(G729AState) == 4);

#pragma pack(pop)

/** The prediction filters of a frame's subframes, Q12; coefficient 0 is 4096. */
using G729AFilter = std::int16_t[G729AOrder + 1];

/** What the synthesis of a frame leaves for its post-filter. */
struct G729AFrameModel
{
    G729AFilter filter[G729ASubframes];
    int lag[G729ASubframes];
};

/** Bytes of a block for an engine made with these options. */
std::uint32_t G729A_MemorySize(const SpeechEngineOptions* options);

/** Makes an engine. @return 0; -1, and a null handle, when options are refused or there is no memory */
std::int32_t G729A_Create(G729AState** handle, const SpeechEngineOptions* options);

/** Sets the next frame up. */
std::int32_t G729A_SetupFrame(G729AState* handle, const SpeechFrameSetup* setup);

/**
 * Decodes a frame into the output that was set up, 80 samples.
 *
 * @param consumed bytes that the frame took, its type byte included; null if not wanted
 * @return 0; -1 when the input ends inside of the frame, which leaves all history as it was
 */
std::int32_t G729A_DecodeFrame(G729AState* handle, std::uint32_t* consumed);

/** Frees the engine and nulls the handle; -1 for a null handle. */
std::int32_t G729A_Delete(G729AState** handle);
