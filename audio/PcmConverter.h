#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

struct SwrContext;

namespace framesmith {

/** Interleaved sample formats that sources deliver, native byte order. */
enum class SampleFormat
{
    U8,
    S16,
    S32,
    Float
};

/** Converts interleaved PCM to 16-bit mono, by libswresample. Used by one thread at a time. */
class PcmConverter
{
public:
    static constexpr int captureRate = 8000; // Hz

    /** @param rate,outputRate Hz @param channels 1 to 8 */
    PcmConverter(SampleFormat format, int rate, int channels, int outputRate = captureRate);
    ~PcmConverter();
    PcmConverter(const PcmConverter&) = delete;
    PcmConverter& operator=(const PcmConverter&) = delete;

    /** False when the input's format cannot be converted. */
    bool valid() const { return m_passThrough || m_context != nullptr; }

    /** Bytes of one frame of the input: one sample of each channel. */
    std::size_t bytesPerFrame() const { return m_bytesPerFrame; }

    /** Appends the converted samples of @p frames frames to @p out. */
    void convert(const void* data, std::size_t frames, std::vector<std::int16_t>& out);

    /** Appends what the filter still holds after the last frame. */
    void flush(std::vector<std::int16_t>& out);

private:
    bool m_passThrough = false;
    std::size_t m_bytesPerFrame = 0;
    SwrContext* m_context = nullptr;
};

} // namespace framesmith
