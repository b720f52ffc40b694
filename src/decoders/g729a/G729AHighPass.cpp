#include "src/decoders/g729a/G729AHighPass.h"

#include "src/decoders/g729a/G729AMath.h"

#include <algorithm>
#include <limits>

namespace G729AHighPass {

namespace {

// Q13
constexpr int a1 = 15836;
constexpr int a2 = -7667;
constexpr int b0 = 7699; // and b2
constexpr int b1 = -15398;

/** An output between frames is kept in the two halves of the Recommendation's double precision. */
std::int32_t join(std::int16_t high, std::int16_t low)
{
    return G729AMath::wrap32((high * 32768LL + low) * 2);
}

void split(std::int32_t value, std::int16_t& high, std::int16_t& low)
{
    high = static_cast<std::int16_t>(value >> 16);
    low = static_cast<std::int16_t>((value & 0xFFFF) >> 1);
}

} // namespace

void filterFrame(G729AState& state)
{
    std::int32_t y1 = join(state.hpfY1Hi, state.hpfY1Lo);
    std::int32_t y2 = join(state.hpfY2Hi, state.hpfY2Lo);
    for (int n = 0; n < G729AFrameSamples; ++n) {
        const std::int16_t x0 = state.output[n];
        const auto recursive =
            static_cast<std::int32_t>(((std::int64_t{a1} * y1) >> 16) + ((std::int64_t{a2} * y2) >> 16));
        const std::int32_t sum = recursive + b0 * (x0 + state.hpfX2) + b1 * state.hpfX1;
        state.hpfX2 = state.hpfX1;
        state.hpfX1 = x0;
        y2 = y1;
        // The halves cannot hold an odd value; the lowest bit goes here.
        y1 = static_cast<std::int32_t>(
            std::clamp<std::int64_t>(sum * 8LL, std::numeric_limits<std::int32_t>::min(),
                                     std::numeric_limits<std::int32_t>::max() - 1));
        state.output[n] = G729AMath::clamp16((sum + 2048) >> 12);
    }
    split(y1, state.hpfY1Hi, state.hpfY1Lo);
    split(y2, state.hpfY2Hi, state.hpfY2Lo);
}

} // namespace G729AHighPass
