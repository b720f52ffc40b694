#pragma once

#include "src/decoders/g729a/G729A.h"

/** Line spectral frequencies and pairs, and the filters that they stand for (ITU-T G.729, clause 3.2). */
namespace G729ALsp {

/** LSF of a speech frame from parm into prevLsf, prevMa and the history (clause 3.2.4). */
void decode(G729AState& state);

/** An erased frame repeats the last LSF; the history is fed with what would have given them (clause 4.4.1).
 */
void repeat(G729AState& state);

/** LSF of a SID frame from parm, as LSP into lspSid (Annex B). */
void decodeSid(G729AState& state);

/** @param lsf Q13 radians, 10 of them @param lsp Q15 (Lsf_lsp2) */
void toLsp(const std::int16_t* lsf, std::int16_t* lsp);

/** A prediction filter from its LSP (clause 3.2.6). */
void toFilter(const std::int16_t* lsp, G729AFilter& filter);

/** Both subframes' filters: the first halfway between lspOld and the new LSP, which lspOld becomes. */
void interpolate(G729AState& state, const std::int16_t* lsp, G729AFrameModel& model);

/** Sorts and spreads LSF until their filter is stable. */
void stabilise(std::int16_t* lsf);

} // namespace G729ALsp
