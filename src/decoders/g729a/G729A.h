#pragma once

/**
 * @file
 * The decoder of ITU-T G.729 Annex A with the comfort noise of Annex B: speech at 8 kHz, frames of 10 ms,
 * 80 samples, 8 kbit/s.
 *
 *   bits -+-> speech: LSP, pitch, fixed codebook, gains --+-> synthesis --> post-filter --> high-pass --> PCM
 *         +-> noise: SID, gain, random excitation --------+
 *
 * Deliberate differences from the Recommendation: a frame starts with a byte for its type, and arithmetic
 * wraps where the Recommendation's operators saturate, except in the places that say "clamp". Used by one
 * thread at a time. No allocation after creation.
 */

#include "src/decoders/GBEngine.h"
#include "src/decoders/SpeechEngine.h"

inline constexpr int G729AFrameSamples = 80;        ///< Samples of a frame.
inline constexpr int G729ASubframeSamples = 40;     ///< Samples of a subframe.
inline constexpr int G729ASubframes = 2;            ///< Subframes of a frame.
inline constexpr int G729AOrder = 10;               ///< Order of the linear prediction.
inline constexpr int G729APredictors = 4;           ///< Rows of the moving average over LSF and over gains.
inline constexpr int G729AExcitationPast = 156;     ///< Two more than the longest lag and its filter need.
inline constexpr int G729ANoiseWords = 966;         ///< Random words of a frame of noise.
inline constexpr std::int16_t G729AMinSharp = 3277; ///< Least pitch sharpening, 0.2, Q14.
inline constexpr int G729AParameters = 11;          ///< Parameters of a frame.
inline constexpr int G729AResidualPast = 144;       ///< Past samples of the post-filter's residual.

/** The way in which a frame is decoded. */
enum G729AFrameType : std::int16_t
{
    G729ANoTransmission = 0, ///< Comfort noise continues.
    G729ASpeech = 1,         ///< Speech.
    G729ASid = 2,            ///< Comfort noise with new parameters.
};

// A block for these records may be given at any address and is used from a multiple of 4 on, so no member may
// need more.
#pragma pack(push, 4)

/** The state of the post-filter. */
struct G729APostFilterState
{
    std::uint32_t external; ///< Whether the record is in the caller's block.
    /** Residual: the past samples, then the subframe. */
    std::int16_t res2Buffer[G729AResidualPast + G729ASubframeSamples];
    /** The same, scaled down. */
    std::int16_t scaledRes2Buffer[G729AResidualPast + G729ASubframeSamples];
    std::int16_t memSynPst[G729AOrder]; ///< Last outputs of the formant filter, oldest first.
    std::int16_t pastGain;              ///< Last gain of the gain control, Q12.
    std::int16_t memPre;                ///< Last input of the tilt filter.
};

/** The state of the comfort noise. */
struct G729ANoiseState
{
    std::uint32_t external; ///< Whether the record is in the caller's block.
    std::int16_t
        lspSid[G729AOrder]; ///< LSP of the last SID frame, Q15; deliberately LSF values at the start.
    std::int16_t curGain;   ///< Smoothed gain of the current frame, in the scale of sidGain.
    std::int16_t sidGain;   ///< Gain of the last SID frame, from G729ATables::tabSidgain.
};

/** The state of the decoder. */
struct G729AState
{
    std::uint32_t external;                               ///< Whether the state is in the caller's block.
    std::uint32_t paddingA;                               ///< Not used.
    GBEngine* reader;                                     ///< Owned.
    std::int16_t* output;                                 ///< Samples of the frame.
    std::uint32_t frameHeader;                            ///< Whether frames start with a type byte.
    std::uint32_t excErr[4];                              ///< Of an encoder; never changes here.
    std::int16_t noiseFg[2][G729APredictors][G729AOrder]; ///< MA predictor of SID frames, Q15.
    std::int16_t pastQuaEn[G729APredictors];              ///< Quantised energies, dB in Q10, newest first.
    std::int16_t hpfY1Lo;                                 ///< Last output of the high-pass, low half.
    std::int16_t hpfY1Hi;                                 ///< Last output of the high-pass, high half.
    std::int16_t hpfY2Lo;                                 ///< The output before, low half.
    std::int16_t hpfY2Hi;                                 ///< The output before, high half.
    std::int16_t hpfX1;                                   ///< Last input of the high-pass.
    std::int16_t hpfX2;                                   ///< The input before.
    std::int16_t freqPrev[G729APredictors][G729AOrder];   ///< LSF history, Q13, newest first.
    std::int16_t synthHistory[G729AOrder];                ///< The samples before synth.
    std::int16_t synth[G729AFrameSamples];                ///< Synthesis of the frame.
    /** Excitation: the past samples, then the frame. */
    std::int16_t oldExc[G729AExcitationPast + G729AFrameSamples];
    std::int16_t
        noiseTable[G729ANoiseWords];  ///< The next random words; the last is the seed of further ones.
    std::int16_t prevMa;              ///< Last switch of the LSF predictor, 0 or 1.
    std::int16_t prevLsf[G729AOrder]; ///< Last LSF, Q13.
    std::uint16_t seedFer;            ///< Seed of the codes that conceal an erasure.
    std::int16_t pastFtyp;            ///< G729AFrameType of the last frame.
    alignas(4) std::int16_t lspOld[G729AOrder]; ///< Last LSP, Q15.
    std::int16_t sidSav;                        ///< Energy of the last good excitation, mantissa.
    std::int16_t shSidSav;                      ///< Energy of the last good excitation, exponent.
    std::int16_t memSyn[G729AOrder];            ///< Last outputs of the synthesis filter, oldest first.
    std::int16_t gainCode;                      ///< Q1.
    std::int16_t gainPitch;                     ///< Q14.
    std::int16_t bfi;                           ///< Whether the frame is erased.
    std::int16_t ftyp;                          ///< G729AFrameType.
    std::int16_t parm[G729AParameters];         ///< Indexed as G729AFrameBits says.
    std::int16_t badLsf;                        ///< Never set.
    std::int16_t sharp;                         ///< Pitch sharpening, Q14.
    std::int16_t oldT0;                         ///< Last whole lag, samples.
    std::uint32_t paddingB;                     ///< Not used.
    std::int16_t* exc;                          ///< Start of the frame's excitation in oldExc.
    std::uint32_t postFilterOn;                 ///< Whether the post-filter is run.
    std::uint32_t paddingC;                     ///< Not used.
    G729APostFilterState* postFilterState;      ///< Owned; null without a post-filter.
    G729ANoiseState* noiseState;                ///< Owned.
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

/** A prediction filter, Q12; coefficient 0 is 4096. */
using G729AFilter = std::int16_t[G729AOrder + 1];

/** The values of a frame's synthesis that its post-filter needs. */
struct G729AFrameModel
{
    G729AFilter filter[G729ASubframes]; ///< Prediction filters of the subframes.
    int lag[G729ASubframes];            ///< Whole lags of the subframes, samples.
};

/** Returns the bytes of a block for an engine with these options. */
std::uint32_t G729A_MemorySize(const SpeechEngineOptions* options);

/** Makes an engine; returns -1, and sets null, when the options are refused or there is no memory. */
std::int32_t G729A_Create(G729AState** handle, const SpeechEngineOptions* options);

/** Sets up the next frame; -1 when a field is refused. */
std::int32_t G729A_SetupFrame(G729AState* handle, const SpeechFrameSetup* setup);

/**
 * Decodes the frame that was set up, 80 samples.
 *
 * @param handle   of G729A_Create
 * @param consumed receives the bytes of the frame, its type byte included; may be null
 * @return 0; -1 when the input ends inside the frame, which leaves the history unchanged
 */
std::int32_t G729A_DecodeFrame(G729AState* handle, std::uint32_t* consumed);

/** Frees the engine and sets the handle to null; -1 for a null handle. */
std::int32_t G729A_Delete(G729AState** handle);
