#include "src/decoders/g7221/G7221FrameBits.h"

#include "src/decoders/Integer.h"
#include "src/decoders/g7221/G7221Tables.h"

#include <algorithm>
#include <cstring>

using namespace G7221Tables;

namespace {

constexpr int regionSize = 20;
constexpr int codedCoefs = G7221Regions * regionSize; // the band above 7 kHz is 0
constexpr int noiseCategory = 7;
constexpr int bins = 14;          // of a category, in centroid
constexpr int envelopeNodes = 23; // of a region's tree
constexpr int balanceRounds = 15;
constexpr int controlBits = 4;
constexpr std::int32_t noiseFactor5 = 5793; // Q15
constexpr std::int32_t noiseFactor6 = 8192;
constexpr std::int32_t noiseFactor7 = 23170;

const std::int16_t* const categoryTrees[7] = {categoryTree0, categoryTree1, categoryTree2, categoryTree3,
                                              categoryTree4, categoryTree5, categoryTree6};

/** A deviation by its index; 0 for one that a hostile stream pushes outside of the table. */
std::int16_t deviationAt(std::int32_t index)
{
    constexpr std::int32_t size = sizeof regionStandardDeviation / sizeof regionStandardDeviation[0];
    return index >= 0 && index < size ? regionStandardDeviation[index] : std::int16_t{0};
}

std::int32_t categoryOf(std::int32_t answer, std::int16_t power)
{
    return std::clamp<std::int32_t>((answer - power) >> 1, 0, noiseCategory);
}

} // namespace

std::int32_t G7221FrameBits::readBit(std::uint32_t& bit)
{
    std::uint32_t word = 0;
    const std::int32_t status = GB_ReadBits(m_state.reader, 1, &word);
    bit = word >> 31U;
    return status;
}

std::int32_t G7221FrameBits::DecodeFrameBits()
{
    G7221State& state = m_state;
    const std::uint32_t start = GB_Position(state.reader);
    std::int16_t shiftToKeep = 0;
    if (state.frameLost != 0) {
        // The first lost frame repeats the last spectrum, a second one is silent.
        std::copy_n(state.oldMltCoefs, codedCoefs, state.mltCoefs);
        std::fill_n(state.oldMltCoefs, codedCoefs, std::int16_t{0});
        state.magShift = state.oldMagShift;
    } else {
        const std::int32_t status = decodeCoefficients();
        if (status != SpeechSuccess) {
            return status;
        }
        std::copy_n(state.mltCoefs, codedCoefs, state.oldMltCoefs);
        shiftToKeep = state.magShift;
    }
    std::fill_n(state.mltCoefs + codedCoefs, G7221FrameSamples - codedCoefs, std::int16_t{0});
    if (GB_Align(state.reader) < 0) {
        return SpeechExhausted;
    }
    const std::uint32_t used = GB_Position(state.reader) - start;
    const std::uint32_t frameBytes = state.bitsPerFrame >> 3U;
    if (used != frameBytes && GB_SkipBytes(state.reader, frameBytes - used) < 0) {
        return SpeechExhausted;
    }
    GB_Release(state.reader);
    state.oldMagShift = shiftToKeep;
    return SpeechSuccess;
}

std::int32_t G7221FrameBits::decodeCoefficients()
{
    if (DecodeEnvelope() < 0) {
        return SpeechExhausted;
    }
    std::uint32_t word = 0;
    const std::int32_t read = GB_ReadBits(m_state.reader, controlBits, &word);
    m_state.bitsLeft = wrap16(m_state.bitsLeft - controlBits);
    if (read < 0) {
        return SpeechExhausted;
    }
    Categorize(m_state.bitsLeft);
    const auto control = static_cast<int>(word >> (32U - controlBits));
    for (int i = 0; i < control; ++i) {
        if (m_balance[i] < G7221Regions) {
            ++m_category[m_balance[i]];
        }
    }
    return DecodeVectors() < 0 ? static_cast<std::int32_t>(SpeechExhausted) : SpeechSuccess;
}

/** The power of each region (clause 4.2). */
std::int32_t G7221FrameBits::DecodeEnvelope()
{
    constexpr unsigned firstBits = 5;
    std::uint32_t word = 0;
    if (GB_ReadBits(m_state.reader, firstBits, &word) < 0) {
        return SpeechFailure;
    }
    m_state.bitsLeft = wrap16(m_state.bitsLeft - static_cast<int>(firstBits));
    m_power[0] = static_cast<std::int16_t>(static_cast<std::int32_t>(word >> (32U - firstBits)) - 7);
    for (int region = 1; region < G7221Regions; ++region) {
        const std::int16_t* tree = differentialRegionPowerTree + region * envelopeNodes * 2;
        std::int32_t entry = 0;
        do {
            std::uint32_t bit = 0;
            const std::int32_t status = readBit(bit);
            m_state.bitsLeft = wrap16(m_state.bitsLeft - 1);
            if (status < 0) {
                return SpeechFailure;
            }
            entry = tree[2 * entry + static_cast<std::int32_t>(bit)];
        } while (entry > 0);
        m_power[region] = wrap16(m_power[region - 1] - entry - 12);
    }
    scaleEnvelope();
    return SpeechSuccess;
}

/** The frame's shift, and each region's deviation in its scale. */
void G7221FrameBits::scaleEnvelope()
{
    constexpr std::int32_t powerOffset = 24; // of the table's index
    std::int32_t sum = 0;
    std::int32_t largest = m_power[0] + powerOffset;
    for (const std::int16_t power : m_power) {
        sum += deviationAt(power + powerOffset);
        largest = std::max(largest, power + powerOffset);
    }
    std::int32_t shift = 9;
    while (shift >= 0 && (sum >= 8 || largest > 28)) {
        sum >>= 1;
        largest -= 2;
        --shift;
    }
    m_state.magShift = static_cast<std::int16_t>(shift);
    for (int region = 0; region < G7221Regions; ++region) {
        m_deviation[region] = deviationAt(m_power[region] + 2 * (shift + 12));
    }
}

/** The categories for a budget of bits, and which regions may be coarser (clause 4.3). */
void G7221FrameBits::Categorize(std::int32_t bits)
{
    if (bits > G7221FrameSamples) {
        bits = G7221FrameSamples + ((bits - G7221FrameSamples) * 5 >> 3);
    }
    std::int32_t answer = -32;
    for (std::int32_t delta = 32; delta > 0; delta >>= 1) {
        const std::int32_t test = answer + delta;
        std::int32_t expected = 0;
        for (const std::int16_t power : m_power) {
            expected += expectedBits[categoryOf(test, power)];
        }
        if (expected >= bits - 32) {
            answer = test;
        }
    }
    BalanceCategories(answer, bits);
}

void G7221FrameBits::BalanceCategories(std::int32_t answer, std::int32_t bits)
{
    std::int32_t maxRate[G7221Regions];
    std::int32_t minRate[G7221Regions];
    std::int32_t maxBits = 0;
    for (int region = 0; region < G7221Regions; ++region) {
        maxRate[region] = minRate[region] = categoryOf(answer, m_power[region]);
        maxBits += expectedBits[maxRate[region]];
    }
    std::int32_t minBits = maxBits;
    int front = 16;
    int back = 16;
    int found = 16; // no region; stands until one qualifies
    for (int round = 0; round < balanceRounds; ++round) {
        if (maxBits + minBits <= 2 * bits) {
            std::int32_t least = 99;
            for (int region = 0; region < G7221Regions; ++region) {
                const std::int32_t value = answer - m_power[region] - 2 * maxRate[region];
                if (maxRate[region] > 0 && value < least) {
                    least = value;
                    found = region;
                }
            }
            m_balance[--front] = found;
            if (found < G7221Regions && maxRate[found] > 0) {
                maxBits -= expectedBits[maxRate[found]];
                maxBits += expectedBits[--maxRate[found]];
            }
        } else {
            std::int32_t most = -99;
            for (int region = G7221Regions - 1; region >= 0; --region) {
                const std::int32_t value = answer - m_power[region] - 2 * minRate[region];
                if (minRate[region] < noiseCategory && value > most) {
                    most = value;
                    found = region;
                }
            }
            m_balance[back++] = found;
            if (found < G7221Regions && minRate[found] < noiseCategory) {
                minBits -= expectedBits[minRate[found]];
                minBits += expectedBits[++minRate[found]];
            }
        }
    }
    std::copy(m_balance + front, m_balance + back, m_balance);
    std::copy_n(maxRate, G7221Regions, m_category);
}

/** The coefficients of all regions (clause 4.4). */
std::int32_t G7221FrameBits::DecodeVectors()
{
    bool ranOut = false;
    for (int region = 0; region < G7221Regions; ++region) {
        m_category[region] = std::min(m_category[region], noiseCategory);
        std::int16_t* coefs = m_state.mltCoefs + region * regionSize;
        const std::int32_t deviation = m_deviation[region];
        if (m_category[region] < noiseCategory) {
            bool ranOutHere = false;
            if (decodeRegion(region, ranOutHere) < 0) {
                return SpeechFailure;
            }
            if (ranOutHere) {
                ranOut = true;
                std::fill(m_category + region, m_category + G7221Regions, noiseCategory);
            }
        }
        if (m_category[region] == 5 || m_category[region] == 6) {
            fillSparse(coefs, m_category[region], deviation);
        } else if (m_category[region] == noiseCategory) {
            fillNoise(coefs, deviation);
        }
    }
    if (ranOut) {
        m_state.bitsLeft = wrap16(m_state.bitsLeft - 1);
    }
    return SpeechSuccess;
}

/** From a tree's root to the leaf that the next bits name. */
G7221FrameBits::Walk G7221FrameBits::walkTree(const std::int16_t* tree, std::int32_t& entry)
{
    constexpr int lookAhead = 24; // bits of the reader's window that are valid at any offset
    GBEngine& reader = *m_state.reader;
    entry = 0;
    if (m_state.bitsLeft >= lookAhead && reader.consumed + 4 <= reader.available) {
        // Neither budget nor input can end here, so the bits are taken together.
        std::uint32_t word = reader.window << reader.bitOffset;
        int bits = 0;
        do {
            entry = tree[2 * entry + static_cast<std::int32_t>(word >> 31U)];
            word <<= 1U;
            ++bits;
        } while (entry > 0 && bits < lookAhead);
        GB_SkipBits(&reader, static_cast<std::uint32_t>(bits));
        m_state.bitsLeft = wrap16(m_state.bitsLeft - bits);
        if (entry <= 0) {
            return Walk::Leaf;
        }
    }
    do {
        if (m_state.bitsLeft < 1) {
            return Walk::BudgetEnded;
        }
        std::uint32_t bit = 0;
        const std::int32_t status = readBit(bit);
        m_state.bitsLeft = wrap16(m_state.bitsLeft - 1);
        if (status < 0) {
            return Walk::InputEnded;
        }
        entry = tree[2 * entry + static_cast<std::int32_t>(bit)];
    } while (entry > 0);
    return Walk::Leaf;
}

/** The vectors of one region; sets ranOut when the budget ends in it. */
std::int32_t G7221FrameBits::decodeRegion(int region, bool& ranOut)
{
    const std::int32_t category = m_category[region];
    const std::int16_t* tree = categoryTrees[category];
    const std::int32_t dimension = vectorDimension[category];
    std::int16_t* coefs = m_state.mltCoefs + region * regionSize;
    for (int vector = 0; vector < vectorsPerRegion[category]; ++vector) {
        std::int32_t entry = 0;
        const Walk walk = walkTree(tree, entry);
        if (walk != Walk::Leaf) {
            ranOut = walk == Walk::BudgetEnded;
            return ranOut ? SpeechSuccess : SpeechFailure;
        }

        std::int32_t index = -entry;
        std::int32_t bin[5] = {};
        std::int32_t signs = 0;
        for (std::int32_t i = dimension - 1; i >= 0; --i) {
            const std::int32_t quotient = index * maxBinPlusOneInverse[category] >> 15;
            bin[i] = index - quotient * (maxBin[category] + 1);
            index = quotient;
            signs += bin[i] != 0 ? 1 : 0;
        }
        if (m_state.bitsLeft < signs) {
            ranOut = true;
            return SpeechSuccess;
        }
        std::uint32_t signBits = 0;
        if (signs > 0) {
            const std::int32_t status =
                GB_ReadBits(m_state.reader, static_cast<std::uint32_t>(signs), &signBits);
            m_state.bitsLeft = wrap16(m_state.bitsLeft - signs);
            if (status < 0) {
                return SpeechFailure;
            }
        }
        for (std::int32_t i = 0; i < dimension; ++i) {
            const std::int32_t place = bin[i] >= 0 && bin[i] < bins ? bin[i] : 0;
            std::int32_t value = wrap16(centroid[category * bins + place] * m_deviation[region] >> 12);
            if (value !=
                0) { // deliberate: a value that the scale makes 0 takes no sign, though it was counted
                value = (signBits >> 31U) != 0 ? value : -value;
                signBits <<= 1U;
            }
            *coefs++ = wrap16(value);
        }
    }
    return SpeechSuccess;
}

/** Noise in the place of the coefficients that were coded as 0. */
void G7221FrameBits::fillSparse(std::int16_t* coefs, int category, std::int32_t deviation)
{
    const std::int32_t noise = deviation * (category == 5 ? noiseFactor5 : noiseFactor6) >> 15;
    for (int half = 0; half < 2; ++half) {
        unsigned word = randomWord();
        for (int i = 0; i < regionSize / 2; ++i, ++coefs) {
            if (*coefs == 0) {
                *coefs = wrap16((word & 1U) != 0 ? noise : -noise);
                word >>= 1U;
            }
        }
    }
}

/** A whole region of noise. */
void G7221FrameBits::fillNoise(std::int16_t* coefs, std::int32_t deviation)
{
    const std::int32_t noise = deviation * noiseFactor7 >> 15;
    for (int half = 0; half < 2; ++half) {
        unsigned word = randomWord();
        for (int i = 0; i < regionSize / 2; ++i, word >>= 1U) {
            *coefs++ = wrap16((word & 1U) != 0 ? noise : -noise);
        }
    }
}

std::uint16_t G7221FrameBits::randomWord()
{
    std::uint16_t* seed = m_state.randSeed;
    auto word = static_cast<std::uint16_t>(seed[0] + seed[3]);
    if ((word & 0x8000U) != 0) {
        word = static_cast<std::uint16_t>(word + 1U);
    }
    seed[3] = seed[2];
    seed[2] = seed[1];
    seed[1] = seed[0];
    seed[0] = word;
    return word;
}
