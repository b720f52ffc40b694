#pragma once

/** G.711 in the 14-bit scale of G.726, for the synchronous coding adjustment (ITU-T G.711, G.726
 * clause 4.2.8). */

#include <cstdint>

namespace G726Tandem {

/** The byte of a signal; loud ones are limited. @param law G726MuLaw or G726ALaw */
std::int32_t compress(std::int32_t law, std::int32_t signal);

/** The signal of a byte, 14 bits. */
std::int32_t expand(std::int32_t law, std::int32_t byte);

/** The byte of the next lower or higher signal; the last ones stay. */
std::int32_t nextLower(std::int32_t law, std::int32_t byte);
std::int32_t nextHigher(std::int32_t law, std::int32_t byte);

} // namespace G726Tandem
