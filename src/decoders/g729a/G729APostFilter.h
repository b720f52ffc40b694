#pragma once

#include "src/decoders/g729a/G729A.h"

/** The post-filter of ITU-T G.729 Annex A, clause A.4.2: pitch, formants, tilt, gain control. */
namespace G729APostFilter {

/** Filters the frame's synthesis into the output; the pitch takes part only in a frame of speech. */
void filterFrame(G729AState& state, const G729AFrameModel& model);

/** The shortest of the seven delays that the long-term filter tries; 137 where seven would leave the history.
 */
int shortestDelay(int lag);

/** A's coefficients times the powers of gamma, Q15 (Weight_Az). */
void weight(const G729AFilter& a, std::int16_t gamma, G729AFilter& weighted);

/**
 * The gains of the long-term filter, Q15.
 *
 * @param correlation the largest one, doubled, at least 0
 * @param delayed,now doubled energies of the residual at that delay, and of this subframe
 */
struct LongTermGains
{
    int now;
    int delayed; ///< 0: the filter is off.
};
LongTermGains longTermGains(std::int32_t correlation, std::int32_t delayed, std::int32_t now);

/** The tilt that is to be taken out, Q15. */
int tilt(const G729AFilter& numerator, const G729AFilter& denominator);

/** How far the gain moves a sample, from the energies of a quarter of the samples; output not 0. */
int gainStep(std::uint32_t input, std::uint32_t output);

} // namespace G729APostFilter
