#pragma once

#include "tests/support/WavFiles.h"

/** What a person would hear, in numbers. */
namespace SignalMeasure {

/** Root mean square in dBFS; a full-scale sine has -3.01. */
double levelDbfs(const WavFiles::Samples& samples);

/** The strongest frequency of a steady tone, Hz, by its zero crossings. */
double toneFrequency(const WavFiles::Samples& samples, int sampleRate);

/** The frequency of most steps of 20 ms, Hz: short gaps do not disturb it. */
double medianFrequency(const WavFiles::Samples& samples, int sampleRate);

struct Alignment
{
    int lag;            ///< Samples by which the recording starts earlier (negative) or later (positive).
    double correlation; ///< -1 to 1.
    double gainDb;      ///< Level of the recording over that of the reference, in the overlap.
};

/** Finds the lag within @p maxLag samples at which the recording is most like the reference. */
Alignment align(const WavFiles::Samples& reference, const WavFiles::Samples& recording, int maxLag);

} // namespace SignalMeasure
