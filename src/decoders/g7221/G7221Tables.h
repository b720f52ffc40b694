#pragma once

#include <cstdint>

/**
 * The tables of ITU-T G.722.1, under the Recommendation's names. In a tree, each node has two entries, for
 * the bits 0 and 1: a positive entry is the next node, any other the negated value.
 */
namespace G7221Tables {

extern const std::int16_t differentialRegionPowerTree[644]; ///< A tree of 23 nodes for each region.
extern const std::int16_t expectedBits[8];                  ///< Expected bits of a region, by category.
extern const std::int16_t vectorDimension[8];               ///< Values of a vector, by category.
extern const std::int16_t vectorsPerRegion[8];              ///< By category.
extern const std::int16_t maxBin[8];                        ///< Largest index of a value, by category.
extern const std::int16_t maxBinPlusOneInverse[8];          ///< Inverse of maxBin + 1, Q15, by category.
extern const std::int16_t centroid[98];                     ///< Magnitudes, Q12: 14 for each of 7 categories.
extern const std::int16_t categoryTree0[360];               ///< Tree of the vectors of category 0.
extern const std::int16_t categoryTree1[186];               ///< Tree of the vectors of category 1.
extern const std::int16_t categoryTree2[94];                ///< Tree of the vectors of category 2.
extern const std::int16_t categoryTree3[1038];              ///< Tree of the vectors of category 3.
extern const std::int16_t categoryTree4[416];               ///< Tree of the vectors of category 4.
extern const std::int16_t categoryTree5[382];               ///< Tree of the vectors of category 5.
extern const std::int16_t categoryTree6[62];                ///< Tree of the vectors of category 6.
extern const std::int16_t window[320];                      ///< Sine window of the transform.
extern const std::int16_t synthesisBias[320];          ///< Offsets that are added to the transform's output.
extern const std::int16_t dctCore[100];                ///< Cosine matrix of the core transform, 10 by 10.
extern const std::int16_t dctRotation0[20];            ///< Cosines and negated sines of a stage, 10 pairs.
extern const std::int16_t dctRotation1[40];            ///< Cosines and negated sines of a stage, 20 pairs.
extern const std::int16_t dctRotation2[80];            ///< Cosines and negated sines of a stage, 40 pairs.
extern const std::int16_t dctRotation3[160];           ///< Cosines and negated sines of a stage, 80 pairs.
extern const std::int16_t dctRotation4[320];           ///< Cosines and negated sines of a stage, 160 pairs.
extern const std::int16_t dctRounding[320];            ///< Rounding of the first stage, 0 or 1.
extern const std::int16_t regionStandardDeviation[54]; ///< 2^((i - 24) / 2), rounded, from i = 22 on.

} // namespace G7221Tables
