#pragma once

#include "src/decoders/g729a/G729A.h"

/** The synthesis of speech from its excitation by the prediction filter (ITU-T G.729, clause 3.10). */
namespace G729ASynthesis {

/** Treatment of a sample that does not fit into 16 bits. */
enum class Overflow
{
    Clamp, ///< The nearest value.
    Wrap,  ///< The low 16 bits.
};

/**
 * Filters by 1/A.
 *
 * @param a        the filter
 * @param input    the samples to filter
 * @param output   receives the samples; may be the input
 * @param count    their number, at most 40
 * @param memory   the ten outputs before, oldest first
 * @param overflow for samples beyond 16 bits
 * @return whether a sample was clamped
 */
bool filter(const G729AFilter& a, const std::int16_t* input, std::int16_t* output, int count,
            const std::int16_t* memory, Overflow overflow = Overflow::Clamp);

/** Treatment of an overflow; two ways, deliberately. */
enum class Rescue
{
    Speech, ///< All but the last two samples of oldExc lose two bits; the filter is run again with Clamp.
    Noise,  ///< All samples of oldExc lose two bits; the filter is run again with Wrap.
};

/** Synthesises a subframe from oldExc into synth; after an overflow again, from a weaker excitation. */
void synthesise(G729AState& state, const G729AFilter& a, int subframe, Rescue rescue);

} // namespace G729ASynthesis
