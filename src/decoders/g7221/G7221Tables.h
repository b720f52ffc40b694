#pragma once

/** The tables of ITU-T G.722.1, under the Recommendation's names. */

#include <cstdint>

namespace G7221Tables {

/** Trees: a positive entry is the next node, any other the negated value; two entries a node, for the bits
 * 0, 1. */
extern const std::int16_t differentialRegionPowerTree[644];
extern const std::int16_t expectedBits[8];
extern const std::int16_t vectorDimension[8];
extern const std::int16_t vectorsPerRegion[8];
extern const std::int16_t maxBin[8];
extern const std::int16_t maxBinPlusOneInverse[8];
extern const std::int16_t centroid[98];
extern const std::int16_t categoryTree0[360];
extern const std::int16_t categoryTree1[186];
extern const std::int16_t categoryTree2[94];
extern const std::int16_t categoryTree3[1038];
extern const std::int16_t categoryTree4[416];
extern const std::int16_t categoryTree5[382];
extern const std::int16_t categoryTree6[62];
extern const std::int16_t window[320];
extern const std::int16_t synthesisBias[320];
extern const std::int16_t dctCore[100];
extern const std::int16_t dctRotation0[20];
extern const std::int16_t dctRotation1[40];
extern const std::int16_t dctRotation2[80];
extern const std::int16_t dctRotation3[160];
extern const std::int16_t dctRotation4[320];
extern const std::int16_t dctRounding[320];
extern const std::int16_t regionStandardDeviation[54];

} // namespace G7221Tables
