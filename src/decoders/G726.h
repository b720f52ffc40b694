#pragma once

#include "src/decoders/G726State.h"

/**
 * G.726 adaptive differential PCM (ITU-T G.726): 16, 24, 32 and 40 kbit/s, 8000 Hz mono.
 *
 * A state is used by one thread at a time. No allocation after creation.
 */

/**
 * Prepares a state, as after a reset.
 *
 * @param state     null to have one allocated, which G726_Release frees
 * @param bitRate   bit/s; any but the four rates is refused
 * @param extCoding G726SampleCoding
 * @param packing   G726Packing
 * @return null when refused, or out of memory
 */
G726State* G726_Create(G726State* state, std::int32_t bitRate, std::int32_t extCoding, std::int32_t packing);

/** Frees a state that G726_Create allocated. Always 0. */
std::int32_t G726_Release(G726State* state);

/**
 * Decodes all codewords that are complete with these bytes; the bits of one that is not wait for the next
 * call.
 *
 * @param samples room for (state->bitCount + 8 * size) / codeBits samples: 16 bits each, or a byte each with
 * a G.711 law
 * @return samples written
 */
std::int32_t G726_DecodeBytes(G726State* state, void* samples, const std::uint8_t* data, std::int32_t size);
