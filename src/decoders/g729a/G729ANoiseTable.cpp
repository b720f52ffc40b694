#include "src/decoders/g729a/G729ANoiseTable.h"

#include "src/decoders/g729a/G729AMath.h"

namespace G729ANoiseTable {

namespace {

constexpr std::uint16_t seed = 11111; // Annex B

// Draws this far apart do not wait for each other: the generator, applied as often, is of the same form.
constexpr int stride = 16;

struct Generator
{
    std::uint16_t factor;
    std::uint16_t summand;
};

constexpr Generator strideGenerator()
{
    std::uint32_t factor = 1;
    std::uint16_t summand = 0;
    for (int i = 0; i < stride; ++i) {
        factor = factor * 31821U & 0xFFFFU;
        summand = G729AMath::draw(summand);
    }
    return {static_cast<std::uint16_t>(factor), summand};
}

void drawAll(std::int16_t* table, std::uint16_t before)
{
    for (int i = 0; i < stride; ++i) {
        before = G729AMath::draw(before);
        table[i] = static_cast<std::int16_t>(before);
    }
    constexpr Generator generator = strideGenerator();
    for (int i = stride; i < G729ANoiseWords; ++i) {
        const auto word = static_cast<std::uint16_t>(table[i - stride]);
        table[i] = static_cast<std::int16_t>(
            static_cast<std::uint16_t>(word * std::uint32_t{generator.factor} + generator.summand));
    }
}

} // namespace

void fill(G729AState& state)
{
    drawAll(state.noiseTable, seed);
}

void renew(G729AState& state)
{
    drawAll(state.noiseTable, static_cast<std::uint16_t>(state.noiseTable[G729ANoiseWords - 1]));
}

} // namespace G729ANoiseTable
