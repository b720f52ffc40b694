#include "src/decoders/g729a/G729AFixedCodebook.h"

#include "src/decoders/Integer.h"

#include <algorithm>

namespace G729AFixedCodebook {

namespace {

constexpr int pulses = 4;
constexpr int tracks = 5;
constexpr std::int16_t positive = 8191; // Q13; 1 itself does not fit into it
constexpr std::int16_t negative = -8192;

} // namespace

void decode(int index, int signs, std::int16_t* code)
{
    const int places[pulses] = {
        tracks * (index & 7),
        tracks * ((index >> 3) & 7) + 1,
        tracks * ((index >> 6) & 7) + 2,
        tracks * ((index >> 10) & 7) + 3 + ((index >> 9) & 1),
    };
    std::fill_n(code, G729ASubframeSamples, static_cast<std::int16_t>(0));
    for (int pulse = 0; pulse < pulses; ++pulse) {
        code[places[pulse]] = ((signs >> pulse) & 1) != 0 ? positive : negative;
    }
}

void sharpen(std::int16_t* code, int lag, std::int16_t sharp)
{
    for (int i = lag; i < G729ASubframeSamples; ++i) {
        code[i] = wrap16(code[i] + ((sharp * code[i - lag]) >> 14));
    }
}

} // namespace G729AFixedCodebook
