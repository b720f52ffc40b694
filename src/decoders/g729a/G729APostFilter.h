#pragma once

#include "src/decoders/g729a/G729A.h"

/** The post-filter of ITU-T G.729 Annex A, clause A.4.2: pitch, formants, tilt, gain control. */
namespace G729APostFilter {

/** Filters the frame's synthesis into the output; the pitch filter is used for speech only. */
void filterFrame(G729AState& state, const G729AFrameModel& model);

/** Returns the shortest of the seven delays that the long-term filter tries, 137 at most for the history's
 * size. */
int shortestDelay(int lag);

/** Multiplies A's coefficients by the powers of gamma, Q15 (Weight_Az). */
void weight(const G729AFilter& a, std::int16_t gamma, G729AFilter& weighted);

/** The gains of the long-term filter, Q15. */
struct LongTermGains
{
    int now;     ///< Of the subframe.
    int delayed; ///< Of the delayed residual; 0: the filter is off.
};

/**
 * Computes the gains of the long-term filter.
 *
 * @param correlation the largest correlation, doubled, at least 0
 * @param delayed     energy of the residual at its delay, doubled
 * @param now         energy of the subframe's residual, doubled
 */
LongTermGains longTermGains(std::int32_t correlation, std::int32_t delayed, std::int32_t now);

/** Returns the tilt that is to be compensated, Q15. */
int tilt(const G729AFilter& numerator, const G729AFilter& denominator);

/** Returns the step of the gain for each sample, from the energies of quartered samples; output not 0. */
int gainStep(std::uint32_t input, std::uint32_t output);

} // namespace G729APostFilter
