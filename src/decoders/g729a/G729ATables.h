#pragma once

#include <cstdint>

/** The tables of ITU-T G.729 with Annexes A and B, under the Recommendation's names where it has some. */
namespace G729ATables {

extern const std::int16_t lspcb1[128][10]; ///< First-stage LSP codebook, Q13.
extern const std::int16_t lspcb2[32][10];  ///< Second-stage LSP codebook, Q13.
/** MA predictors of the LSP quantiser, Q15: switch, tap (newest first). */
extern const std::int16_t fg[2][4][10];
extern const std::int16_t fgSum[2][10];      ///< One minus the sum of the taps, Q15.
extern const std::int16_t fgSumInv[2][10];   ///< Its inverse, Q12.
extern const std::int16_t freqPrevReset[10]; ///< LSF history at the start, Q13.
extern const std::int16_t table2[64];        ///< Cosine of the LSF to LSP conversion, Q15.
extern const std::int16_t slope[64];         ///< Its slopes, Q12.
/** Interpolation filter of the adaptive codebook at 1/3 resolution, Q15. */
extern const std::int16_t inter3l[31];
extern const std::int16_t gbk1[8][2];        ///< Gain codebook, first stage: pitch gain Q14, code gain Q13.
extern const std::int16_t gbk2[16][2];       ///< The same, second stage.
extern const std::int16_t imap1[8];          ///< Entry of gbk1 by received index.
extern const std::int16_t imap2[16];         ///< Entry of gbk2 by received index.
extern const std::int16_t gainPrediction[4]; ///< MA prediction of the code energy, Q13, newest first.
extern const std::int16_t tablog[33];        ///< Logarithm, Q15.
extern const std::int16_t tabpow[33];        ///< Power of two, Q14.
extern const std::int16_t tabsqr[49];        ///< Inverse square root, Q15.
extern const std::int16_t PtrTab_1[32];      ///< Annex B: entries of lspcb1 for SID frames.
extern const std::int16_t PtrTab_2[2][16];   ///< Annex B: entries of lspcb2 for SID frames, by half.
extern const std::int16_t noiseFgSum[2][10]; ///< Annex B: as fgSum, for the predictor of SID frames.
extern const std::int16_t tabSidgain[32];    ///< Annex B: SID gains.

} // namespace G729ATables
