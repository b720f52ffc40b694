#include "src/playback/SwrConverter.h"

#include "src/decoders/PcmBlock.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <utility>

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/samplefmt.h>
#include <libswresample/swresample.h>
}

namespace {

// Deliberately below what libswresample takes: its filter grows with the ratio of the rates, to a gigabyte
// and many seconds within its own limit, and a stream's rate comes from outside. No sound card goes beyond.
constexpr int maxRate = 768000; // Hz

constexpr std::array<int, 4> bytesPerSample{1, 2, 4, 4}; // by sample format

// By channel count.
constexpr std::array<std::int64_t, 9> channelLayouts{
    0,
    AV_CH_LAYOUT_MONO,
    AV_CH_LAYOUT_STEREO,
    AV_CH_LAYOUT_2POINT1,
    AV_CH_LAYOUT_4POINT0,
    AV_CH_LAYOUT_5POINT0_BACK,
    AV_CH_LAYOUT_5POINT1_BACK,
    AV_CH_LAYOUT_6POINT1,
    AV_CH_LAYOUT_7POINT1,
};

bool isFormat(int format)
{
    return format >= 0 && static_cast<std::size_t>(format) < bytesPerSample.size();
}

std::int64_t layoutOf(int channels)
{
    const bool known = channels > 0 && static_cast<std::size_t>(channels) < channelLayouts.size();
    return known ? channelLayouts[static_cast<std::size_t>(channels)] : 0;
}

} // namespace

SwrConverter::SwrConverter(SwrConverter&& other) noexcept
    : m_context(std::exchange(other.m_context, nullptr)),
      m_outBytesPerSample(std::exchange(other.m_outBytesPerSample, 0)),
      m_outChannels(std::exchange(other.m_outChannels, 0)), m_outRate(std::exchange(other.m_outRate, 0)),
      m_inBytesPerSample(std::exchange(other.m_inBytesPerSample, 0)),
      m_inChannels(std::exchange(other.m_inChannels, 0)), m_inRate(std::exchange(other.m_inRate, 0)),
      m_input(std::move(other.m_input))
{
}

SwrConverter::~SwrConverter()
{
    swr_free(&m_context);
}

int SwrConverter::Setup(int outFormat, int outRate, int outChannels, int inFormat, int inRate, int inChannels)
{
    if (!isFormat(outFormat) || !isFormat(inFormat)) {
        return -1;
    }
    const std::int64_t outLayout = layoutOf(outChannels);
    const std::int64_t inLayout = layoutOf(inChannels);
    if (outLayout == 0 || inLayout == 0) {
        return -1;
    }
    m_outBytesPerSample = bytesPerSample[static_cast<std::size_t>(outFormat)];
    m_outChannels = outChannels;
    m_outRate = outRate;
    m_inBytesPerSample = bytesPerSample[static_cast<std::size_t>(inFormat)];
    m_inChannels = inChannels;
    m_inRate = inRate;
    if (outLayout == inLayout && outFormat == inFormat && outRate == inRate) {
        return 0;
    }
    if (outRate < 1 || outRate > maxRate || inRate < 1 || inRate > maxRate) {
        return -1;
    }
    m_context = swr_alloc_set_opts(nullptr, outLayout, static_cast<AVSampleFormat>(outFormat), outRate,
                                   inLayout, static_cast<AVSampleFormat>(inFormat), inRate, 0, nullptr);
    if (m_context == nullptr || swr_init(m_context) < 0) {
        swr_free(&m_context);
        return -1;
    }
    m_input.resize(pcmBlockSize);
    return 1;
}

int SwrConverter::ConvertInPlace(std::uint8_t* block, int size)
{
    if (m_context == nullptr) {
        return size;
    }
    const std::int64_t outFrameSize = std::int64_t{m_outChannels} * m_outBytesPerSample;
    const std::int64_t outRoom = pcmBlockSize / outFrameSize;
    const std::int64_t delay = swr_get_delay(m_context, m_inRate);
    // The most input whose output, computed as below, fits the block.
    const std::int64_t inRoom = (outRoom * m_inRate - (m_inRate - 1)) / m_outRate - delay;
    const std::int64_t inSamples =
        std::clamp<std::int64_t>(std::min(size, pcmBlockSize) / m_inBytesPerSample / m_inChannels, 0,
                                 std::max<std::int64_t>(inRoom, 0));
    const std::int64_t outSamples =
        std::min((m_inRate - 1 + m_outRate * (delay + inSamples)) / m_inRate, outRoom);

    // libswresample reads behind what it has written when it only widens samples, so it reads from a copy.
    std::memcpy(m_input.data(), block,
                static_cast<std::size_t>(inSamples * m_inBytesPerSample * m_inChannels));
    const std::uint8_t* input = m_input.data();
    const int converted =
        swr_convert(m_context, &block, static_cast<int>(outSamples), &input, static_cast<int>(inSamples));
    return converted < 0 ? 0 : static_cast<int>(outFrameSize * converted);
}
