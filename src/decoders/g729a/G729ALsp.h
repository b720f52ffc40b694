#pragma once

#include "src/decoders/g729a/G729A.h"

/** Line spectral frequencies (LSF), pairs (LSP) and their prediction filters (ITU-T G.729, clause 3.2). */
namespace G729ALsp {

/** Decodes the LSF of a speech frame from parm into prevLsf, prevMa and the history (clause 3.2.4). */
void decode(G729AState& state);

/** Repeats the last LSF for an erased frame; the history gets the values that give them (clause 4.4.1). */
void repeat(G729AState& state);

/** Decodes the LSF of a SID frame from parm, as LSP into lspSid (Annex B). */
void decodeSid(G729AState& state);

/** Converts 10 LSF, radians in Q13, to LSP in Q15 (Lsf_lsp2). */
void toLsp(const std::int16_t* lsf, std::int16_t* lsp);

/** Computes a prediction filter from its LSP (clause 3.2.6). */
void toFilter(const std::int16_t* lsp, G729AFilter& filter);

/** Computes both subframes' filters, the first from the mean of lspOld and @p lsp; lspOld is then @p lsp. */
void interpolate(G729AState& state, const std::int16_t* lsp, G729AFrameModel& model);

/** Sorts and spreads LSF until their filter is stable. */
void stabilise(std::int16_t* lsf);

} // namespace G729ALsp
