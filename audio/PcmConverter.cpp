#include "audio/PcmConverter.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/samplefmt.h>
#include <libswresample/swresample.h>
}

namespace framesmith {

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
    AVChannelLayout inputLayout{};
    AVChannelLayout outputLayout{};
    av_channel_layout_default(&inputLayout, channels);
    av_channel_layout_default(&outputLayout, 1);
    if (swr_alloc_set_opts2(&m_context, &outputLayout, AV_SAMPLE_FMT_S16, outputRate, &inputLayout, input,
                            rate, 0, nullptr) < 0 ||
        swr_init(m_context) < 0) {
        swr_free(&m_context);
    }
}

PcmConverter::~PcmConverter()
{
    swr_free(&m_context);
}

void PcmConverter::convert(const void* data, std::size_t frames, std::vector<std::int16_t>& out)
{
    if (m_passThrough) {
        const auto* samples = static_cast<const std::int16_t*>(data);
        out.insert(out.end(), samples, samples + frames);
        return;
    }
    if (m_context == nullptr) {
        return;
    }
    const int room = swr_get_out_samples(m_context, static_cast<int>(frames));
    if (room <= 0) {
        return;
    }
    const std::size_t before = out.size();
    out.resize(before + static_cast<std::size_t>(room));
    auto* target = reinterpret_cast<std::uint8_t*>(out.data() + before);
    const auto* source = static_cast<const std::uint8_t*>(data);
    const int made =
        swr_convert(m_context, &target, room, data != nullptr ? &source : nullptr, static_cast<int>(frames));
    out.resize(before + static_cast<std::size_t>(made > 0 ? made : 0));
}

void PcmConverter::flush(std::vector<std::int16_t>& out)
{
    if (m_context != nullptr) {
        convert(nullptr, 0, out);
    }
}

} // namespace framesmith
