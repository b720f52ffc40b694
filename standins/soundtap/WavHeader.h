#pragma once

/**
 * Reads the header of a WAV file (RIFF, WAVE form, PCM): where the samples lie and how fast they go.
 *
 * Chunks may come in any order, unknown ones are skipped. A data chunk whose size is 0 or 0xFFFFFFFF, as a
 * writer leaves it that never finished the header, or that reaches beyond the file's end, ends with the file.
 */

#include <cstdint>
#include <istream>

namespace soundtap {

enum WavError : std::int32_t
{
    WavOk = 0,
    WavUnreadable = -1,   ///< Not to be opened or read.
    WavNotRiff = -2,      ///< No RIFF/WAVE file.
    WavNoFormat = -3,     ///< No format chunk, or a broken one.
    WavUnsupported = -4,  ///< Not PCM, or sizes that no PCM file has.
    WavNoSamples = -5,    ///< No data chunk, or not one whole sample in it.
    WavTooManyParts = -6, ///< More chunks than any sane file has.
    WavTooLarge = -7,     ///< The samples start beyond 4 GiB.
};

struct WavHeader
{
    std::uint32_t sampleRate = 0; ///< Hz, not 0.
    std::uint32_t dataBegin = 0;  ///< File offset of the first sample.
    std::uint32_t dataEnd = 0;    ///< File offset behind the last whole sample.
};

/** Reads a seekable stream of any contents; @p header is complete only with WavOk. */
WavError readWavHeader(std::istream& stream, WavHeader& header);

} // namespace soundtap
