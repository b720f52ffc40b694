#pragma once

#include "audio/FfmpegPtr.h"

#include <cstddef>
#include <cstdint>
#include <vector>

struct AVChannelLayout;

namespace framesmith {

/** Interleaved sample formats that sources deliver, native byte order. */
enum class SampleFormat
{
    U8,
    S16,
    S32,
    Float
};

/** Converts PCM to 16-bit mono, by libswresample. Used by one thread at a time. */
class PcmConverter
{
public:
    static constexpr int captureRate = 8000; // Hz

    /** Converts interleaved samples. @param rate,outputRate Hz @param channels 1 to 8 */
    PcmConverter(SampleFormat format, int rate, int channels, int outputRate = captureRate);

    /** Converts what a codec of libavcodec decodes. @param avFormat AVSampleFormat @param rate,outputRate Hz
     */
    PcmConverter(int avFormat, int rate, const AVChannelLayout& layout, int outputRate);

    /** False when the input's format cannot be converted. */
    bool valid() const { return m_passThrough || m_context != nullptr; }

    /** Bytes of one frame of the interleaved input: one sample of each channel. */
    std::size_t bytesPerFrame() const { return m_bytesPerFrame; }

    /** Appends the converted samples of @p frames frames to @p out. */
    void convert(const void* data, std::size_t frames, std::vector<std::int16_t>& out);

    /** The same for samples in planes; interleaved ones are a single plane. */
    void convertPlanes(const std::uint8_t* const* planes, std::size_t frames, std::vector<std::int16_t>& out);

    /** Appends what the filter still holds after the last frame. */
    void flush(std::vector<std::int16_t>& out);

private:
    void open(int avFormat, int rate, const AVChannelLayout& layout, int outputRate);

    bool m_passThrough = false;
    std::size_t m_bytesPerFrame = 0;
    FfmpegPtr<SwrContext> m_context;
};

} // namespace framesmith
