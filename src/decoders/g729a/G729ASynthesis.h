#pragma once

#include "src/decoders/g729a/G729A.h"

/** From excitation to speech by the prediction filter (ITU-T G.729, clause 3.10). */
namespace G729ASynthesis {

/** What becomes of a sample that does not fit into 16 bits. */
enum class Overflow
{
    Clamp,
    Wrap,
};

/**
 * Filters by 1/A.
 *
 * @param input,output count samples, at most 40; may be the same
 * @param memory the ten outputs before, oldest first
 * @return whether a sample was clamped
 */
bool filter(const G729AFilter& a, const std::int16_t* input, std::int16_t* output, int count,
            const std::int16_t* memory, Overflow overflow = Overflow::Clamp);

/** Which way of going on after an overflow; two, deliberately. */
enum class Rescue
{
    Speech, ///< All but the last two samples of oldExc lose two bits; filtered again with clamping.
    Noise,  ///< All of oldExc does; filtered again, samples cut to 16 bits.
};

/** Synthesises a subframe from oldExc into synth; on an overflow again, from a weaker excitation. */
void synthesise(G729AState& state, const G729AFilter& a, int subframe, Rescue rescue);

} // namespace G729ASynthesis
