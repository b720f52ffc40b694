#include "audio/PcmConverter.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/samplefmt.h>
#include <libswresample/swresample.h>
}

namespace {

constexpr int maxChannels = 8;

AVSampleFormat toAvFormat(SampleFormat format)
{
    switch (format) {
    case SampleFormat::U8:
        return AV_SAMPLE_FMT_U8;
    case SampleFormat::S16:
        return AV_SAMPLE_FMT_S16;
    case SampleFormat::S32:
        return AV_SAMPLE_FMT_S32;
    case SampleFormat::Float:
        return AV_SAMPLE_FMT_FLT;
    }
    return AV_SAMPLE_FMT_NONE;
}

} // namespace

PcmConverter::PcmConverter(SampleFormat format, int rate, int channels, int outputRate)
{
    if (rate <= 0 || outputRate <= 0 || channels <= 0 || channels > maxChannels) {
        return;
    }
    const AVSampleFormat input = toAvFormat(format);
    m_bytesPerFrame =
        static_cast<std::size_t>(av_get_bytes_per_sample(input)) * static_cast<std::size_t>(channels);
    m_passThrough = format == SampleFormat::S16 && rate == outputRate && channels == 1;
    if (m_passThrough) {
        return;
    }
    AVChannelLayout layout{};
    av_channel_layout_default(&layout, channels);
    open(input, rate, layout, outputRate);
}

PcmConverter::PcmConverter(int avFormat, int rate, const AVChannelLayout& layout, int outputRate)
{
    open(avFormat, rate, layout, outputRate);
}

void PcmConverter::open(int avFormat, int rate, const AVChannelLayout& layout, int outputRate)
{
    AVChannelLayout mono{};
    av_channel_layout_default(&mono, 1);
    auto* input = const_cast<AVChannelLayout*>(&layout); // only read, though FFmpeg 5.1 does not say so
    SwrContext* context = nullptr;
    const int allocated = swr_alloc_set_opts2(&context, &mono, AV_SAMPLE_FMT_S16, outputRate, input,
                                              static_cast<AVSampleFormat>(avFormat), rate, 0, nullptr);
    m_context.reset(context);
    if (allocated < 0 || swr_init(context) < 0) {
        m_context.reset();
    }
}

void PcmConverter::convert(const void* data, std::size_t frames, std::vector<std::int16_t>& out)
{
    if (m_passThrough) {
        const auto* samples = static_cast<const std::int16_t*>(data);
        out.insert(out.end(), samples, samples + frames);
        return;
    }
    const auto* plane = static_cast<const std::uint8_t*>(data);
    convertPlanes(data != nullptr ? &plane : nullptr, frames, out);
}

void PcmConverter::convertPlanes(const std::uint8_t* const* planes, std::size_t frames,
                                 std::vector<std::int16_t>& out)
{
    if (m_context == nullptr) {
        return;
    }
    const int room = swr_get_out_samples(m_context.get(), static_cast<int>(frames));
    if (room <= 0) {
        return;
    }
    const std::size_t before = out.size();
    out.resize(before + static_cast<std::size_t>(room));
    auto* target = reinterpret_cast<std::uint8_t*>(out.data() + before);
    const int made = swr_convert(m_context.get(), &target, room, const_cast<const std::uint8_t**>(planes),
                                 static_cast<int>(frames));
    out.resize(before + static_cast<std::size_t>(made > 0 ? made : 0));
}

void PcmConverter::flush(std::vector<std::int16_t>& out)
{
    if (m_context != nullptr) {
        convert(nullptr, 0, out);
    }
}
