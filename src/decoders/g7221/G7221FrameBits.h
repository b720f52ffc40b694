#pragma once

#include "src/decoders/g7221/G7221.h"

/** Decodes the bits of a frame to transform coefficients (ITU-T G.722.1, clauses 4.1 to 4.6). */
class G7221FrameBits
{
public:
    /** @param state outlives the object */
    explicit G7221FrameBits(G7221State& state) : m_state(state) {}

    /** Computes the state's coefficients and shift. Returns 0, or 5 when the input ended. */
    std::int32_t DecodeFrameBits();

private:
    std::int32_t decodeCoefficients();
    std::int32_t DecodeEnvelope();
    void scaleEnvelope();
    void Categorize(std::int32_t bits);
    void BalanceCategories(std::int32_t answer, std::int32_t bits);
    std::int32_t DecodeVectors();
    std::int32_t decodeRegion(int region, bool& ranOut);
    void fillSparse(std::int16_t* coefs, int category, std::int32_t deviation);
    void fillNoise(std::int16_t* coefs, std::int32_t deviation);
    enum class Walk
    {
        Leaf,
        BudgetEnded,
        InputEnded,
    };
    Walk walkTree(const std::int16_t* tree, std::int32_t& entry);
    std::int32_t readBit(std::uint32_t& bit);
    std::uint16_t randomWord();

    G7221State& m_state;
    std::int16_t m_power[G7221Regions] = {}; ///< In steps of 3 dB.
    std::int16_t m_deviation[G7221Regions] = {};
    std::int32_t m_category[G7221Regions] = {}; ///< 0, the finest, to 7, noise alone.
    std::int32_t m_balance[2 * 16] = {};        ///< Regions in the order in which they may be coarser.
};
