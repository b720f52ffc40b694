#pragma once

#include "src/decoders/G726State.h"

/**
 * @file
 * G.726 adaptive differential PCM (ITU-T G.726): 16, 24, 32 and 40 kbit/s, 8000 Hz mono.
 *
 * A state is used by one thread at a time. No allocation after creation.
 */

/**
 * Prepares a state, as after a reset.
 *
 * @param state     null to allocate one, which G726_Release frees
 * @param bitRate   bit/s; other values than the four rates are refused
 * @param extCoding G726SampleCoding
 * @param packing   G726Packing
 * @return null when an argument is refused or there is no memory
 */
G726State* G726_Create(G726State* state, std::int32_t bitRate, std::int32_t extCoding, std::int32_t packing);

/** Frees a state that G726_Create allocated; returns 0. */
std::int32_t G726_Release(G726State* state);

/**
 * Decodes all codewords that are complete with these bytes. The bits of an incomplete one are stored for the
 * next call.
 *
 * @param state   of G726_Create
 * @param samples room for (state->bitCount + 8 * size) / codeBits samples: 16 bits each, or a byte each with
 *                a G.711 law
 * @param data    the bytes
 * @param size    their number
 * @return the number of samples written
 */
std::int32_t G726_DecodeBytes(G726State* state, void* samples, const std::uint8_t* data, std::int32_t size);
