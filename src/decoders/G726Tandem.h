#pragma once

#include <cstdint>

/**
 * G.711 in the 14-bit scale of G.726, for the synchronous coding adjustment (ITU-T G.711; G.726,
 * clause 4.2.8). A law is G726MuLaw or G726ALaw.
 */
namespace G726Tandem {

/** Returns the byte of a signal; loud ones are limited. */
std::int32_t compress(std::int32_t law, std::int32_t signal);

/** Returns the signal of a byte, 14 bits. */
std::int32_t expand(std::int32_t law, std::int32_t byte);

/** Returns the byte of the next lower signal; the lowest one has itself. */
std::int32_t nextLower(std::int32_t law, std::int32_t byte);
/** Returns the byte of the next higher signal; the highest one has itself. */
std::int32_t nextHigher(std::int32_t law, std::int32_t byte);

} // namespace G726Tandem
