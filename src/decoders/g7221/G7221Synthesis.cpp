#include "src/decoders/g7221/G7221Synthesis.h"

#include "src/decoders/Integer.h"
#include "src/decoders/g7221/G7221Tables.h"

#include <algorithm>
#include <utility>

using namespace G7221Tables;

namespace {

constexpr int length = G7221FrameSamples;
constexpr int half = length / 2;
constexpr int stages = 5;
constexpr int coreSize = 10;

const std::int16_t* const rotations[stages] = {dctRotation0, dctRotation1, dctRotation2, dctRotation3,
                                               dctRotation4};

/** A product in 32 bits that wrap with the sums it goes into. */
std::uint32_t product(std::int16_t a, std::int16_t b)
{
    return static_cast<std::uint32_t>(std::int32_t{a} * b);
}

/** The high word of a rounded sum. */
std::int16_t rounded(std::uint32_t scaledSum)
{
    return static_cast<std::int16_t>(static_cast<std::int32_t>(scaledSum + 32768U) >> 16);
}

/** Sums to the low end of each set, differences to its high end; the first stage halves. */
void butterflies(const std::int16_t* in, std::int16_t* out)
{
    for (int i = 0; i < half; ++i) {
        const std::int32_t x = in[2 * i];
        const std::int32_t y = in[2 * i + 1];
        out[i] = wrap16((x + y + dctRounding[2 * i]) >> 1);
        out[length - 1 - i] = wrap16((x - y + dctRounding[2 * i + 1]) >> 1);
    }
}

void butterflies(const std::int16_t* in, std::int16_t* out, int setSize)
{
    for (int base = 0; base < length; base += setSize) {
        for (int i = 0; i < setSize / 2; ++i) {
            const std::int32_t x = in[base + 2 * i];
            const std::int32_t y = in[base + 2 * i + 1];
            out[base + i] = wrap16(x + y);
            out[base + setSize - 1 - i] = wrap16(x - y);
        }
    }
}

/** The transform of each block of ten; all blocks side by side, for vector instructions. */
void core(const std::int16_t* in, std::int16_t* out)
{
    constexpr int blocks = length / coreSize;
    std::int16_t columns[coreSize][blocks];
    for (int block = 0; block < blocks; ++block) {
        for (int j = 0; j < coreSize; ++j) {
            columns[j][block] = in[block * coreSize + j];
        }
    }
    for (int k = 0; k < coreSize; ++k) {
        std::uint32_t sums[blocks] = {};
        for (int j = 0; j < coreSize; ++j) {
            const std::int16_t factor = dctCore[j * coreSize + k];
            for (int block = 0; block < blocks; ++block) {
                sums[block] += product(columns[j][block], factor);
            }
        }
        for (int block = 0; block < blocks; ++block) {
            out[block * coreSize + k] = rounded(2U * sums[block]);
        }
    }
}

/** Turns pairs from the two halves of each set by the table's angles, with two sign patterns in turn. */
void rotate(const std::int16_t* in, std::int16_t* out, int setSize, const std::int16_t* table)
{
    for (int base = 0; base < length; base += setSize) {
        const std::int16_t* low = in + base;
        const std::int16_t* high = low + setSize / 2;
        std::int16_t* first = out + base;
        std::int16_t* last = first + setSize - 1;
        for (int i = 0; i < setSize / 2; i += 2) {
            const std::int16_t c = table[2 * i];
            const std::int16_t m = table[2 * i + 1];
            first[i] = rounded(4U * (product(low[i], c) - product(high[i], m)));
            last[-i] = rounded(4U * (product(high[i], c) + product(low[i], m)));
            const std::int16_t nextC = table[2 * i + 2];
            const std::int16_t nextM = table[2 * i + 3];
            first[i + 1] = rounded(4U * (product(low[i + 1], nextC) + product(high[i + 1], nextM)));
            last[-i - 1] = rounded(4U * (product(low[i + 1], nextM) - product(high[i + 1], nextC)));
        }
    }
}

std::int16_t overlapped(std::uint32_t sum)
{
    const std::int32_t value = static_cast<std::int32_t>(sum + 4096U) >> 13;
    return static_cast<std::int16_t>(std::clamp(value, -32768, 32767));
}

} // namespace

void G7221Synthesis::DctTypeIV(const std::int16_t* coefs, std::int16_t* samples)
{
    std::int16_t workA[length];
    std::int16_t workB[length];
    butterflies(coefs, workA);
    std::int16_t* in = workA;
    std::int16_t* out = workB;
    for (int stage = 1; stage < stages; ++stage) {
        butterflies(in, out, length >> stage);
        std::swap(in, out);
    }
    core(in, out);
    std::swap(in, out);
    for (int stage = stages - 1; stage > 0; --stage) {
        rotate(in, out, length >> stage, rotations[stages - 1 - stage]);
        std::swap(in, out);
    }
    rotate(in, samples, length, rotations[stages - 1]);
}

void G7221Synthesis::CoefsToSamples(G7221State& state)
{
    std::int16_t* fresh = state.newSamples;
    DctTypeIV(state.mltCoefs, fresh);
    for (int i = 0; i < length; ++i) {
        fresh[i] = wrap16(fresh[i] + synthesisBias[i]);
    }
    if (state.magShift > 0) {
        for (int i = 0; i < length; ++i) {
            fresh[i] = static_cast<std::int16_t>(fresh[i] >> state.magShift);
        }
    } else if (state.magShift < 0) {
        for (int i = 0; i < length; ++i) {
            fresh[i] = wrap16(fresh[i] * 2); // -1 is the only negative shift
        }
    }
    const std::int16_t* old = state.oldSamples;
    for (int i = 0; i < half; ++i) {
        state.output[i] =
            overlapped(product(old[i], window[length - 1 - i]) + product(fresh[half - 1 - i], window[i]));
        state.output[half + i] = overlapped(product(fresh[i], window[half + i]) -
                                            product(old[half - 1 - i], window[half - 1 - i]));
    }
}
