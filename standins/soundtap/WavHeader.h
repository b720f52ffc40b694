#pragma once

/**
 * @file
 * The header of a WAV file (RIFF, WAVE form, PCM): the place and the rate of its samples.
 *
 * Chunks may be in any order; unknown ones are skipped. A data chunk ends with the file if it reaches beyond
 * the file's end, or if its size is 0 or 0xFFFFFFFF, which writers leave that never completed the header.
 */

#include <cstdint>
#include <istream>

/** The stand-in for the library of WAV headers. */
namespace soundtap {

/** Results of reading a header. */
enum WavError : std::int32_t
{
    WavOk = 0,            ///< The header is complete.
    WavUnreadable = -1,   ///< The file cannot be opened or read.
    WavNotRiff = -2,      ///< Not a RIFF/WAVE file.
    WavNoFormat = -3,     ///< No format chunk, or a broken one.
    WavUnsupported = -4,  ///< Not PCM, or sizes that are not possible for PCM.
    WavNoSamples = -5,    ///< No data chunk, or not one whole sample in it.
    WavTooManyParts = -6, ///< More than 10000 chunks.
    WavTooLarge = -7,     ///< The samples start beyond 4 GiB.
};

/** The facts that a header holds. */
struct WavHeader
{
    std::uint32_t sampleRate = 0; ///< Hz, not 0.
    std::uint32_t dataBegin = 0;  ///< File offset of the first sample.
    std::uint32_t dataEnd = 0;    ///< File offset behind the last whole sample.
};

/** Reads the header of a seekable stream of any contents; @p header is complete only with WavOk. */
WavError readWavHeader(std::istream& stream, WavHeader& header);

} // namespace soundtap
