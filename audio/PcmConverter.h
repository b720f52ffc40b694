#pragma once

#include "audio/FfmpegPtr.h"

#include <cstddef>
#include <cstdint>
#include <vector>

struct AVChannelLayout;

/** Sample formats of sources, interleaved, native byte order. */
enum class SampleFormat
{
    U8,   ///< Unsigned 8 bits.
    S16,  ///< Signed 16 bits.
    S32,  ///< Signed 32 bits.
    Float ///< 32 bits, -1 to 1.
};

/** Converts PCM to 16-bit mono, by libswresample. Used by one thread at a time. */
class PcmConverter
{
public:
    static constexpr int captureRate = 8000; ///< Sample rate of captured sound, Hz.

    /**
     * Makes a converter of interleaved samples.
     *
     * @param format     of the input
     * @param rate       of the input, Hz
     * @param channels   of the input, 1 to 8
     * @param outputRate of the output, Hz
     */
    PcmConverter(SampleFormat format, int rate, int channels, int outputRate = captureRate);

    /**
     * Makes a converter of the samples of a codec of libavcodec.
     *
     * @param avFormat   AVSampleFormat of the input
     * @param rate       of the input, Hz
     * @param layout     channels of the input
     * @param outputRate of the output, Hz
     */
    PcmConverter(int avFormat, int rate, const AVChannelLayout& layout, int outputRate);

    /** Returns whether the input's format can be converted. */
    bool valid() const { return m_passThrough || m_context != nullptr; }

    /** Returns the bytes of one frame of the interleaved input: one sample of each channel. */
    std::size_t bytesPerFrame() const { return m_bytesPerFrame; }

    /** Appends the converted samples of @p frames frames to @p out. */
    void convert(const void* data, std::size_t frames, std::vector<std::int16_t>& out);

    /** Appends the converted samples of input in planes; interleaved input is a single plane. */
    void convertPlanes(const std::uint8_t* const* planes, std::size_t frames, std::vector<std::int16_t>& out);

    /** Appends the samples that the filter still holds after the last frame. */
    void flush(std::vector<std::int16_t>& out);

private:
    void open(int avFormat, int rate, const AVChannelLayout& layout, int outputRate);

    bool m_passThrough = false;
    std::size_t m_bytesPerFrame = 0;
    FfmpegPtr<SwrContext> m_context;
};
