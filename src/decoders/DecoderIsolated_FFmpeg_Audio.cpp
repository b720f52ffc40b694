#include "src/decoders/DecoderIsolated_FFmpeg.h"
#include "src/decoders/PcmBlock.h"

#include <algorithm>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/channel_layout.h>
#include <libavutil/samplefmt.h>
#include <libswresample/swresample.h>
}

std::int32_t DecoderIsolated_FFmpeg::DecodeAudio(std::uint8_t* pcm, std::uint32_t* size,
                                                 const EncodedChunk* chunk)
{
    const std::uint32_t room = *size;
    std::uint32_t written = 0;
    if (sendAndCollect(*chunk, std::max<std::int64_t>(room, pcmBlockSize)) < 0) {
        return -1;
    }
    while (!m_decoded.empty()) {
        Frame* frame = takeFront();
        const std::int32_t result = appendPcm(*frame, pcm, room, written);
        FramePool::release(frame);
        if (result < 0) {
            return -1;
        }
    }
    *size = written;
    return 0;
}

std::int32_t DecoderIsolated_FFmpeg::appendPcm(const Frame& frame, std::uint8_t* pcm, std::uint32_t room,
                                               std::uint32_t& written)
{
    // A stream may change its shape while older frames wait; such a frame can't be read as the context says.
    if (frame.channels != m_context->channels || frame.format != m_context->sample_fmt) {
        return -1;
    }
    const int needed =
        av_samples_get_buffer_size(nullptr, m_context->channels, frame.nb_samples, AV_SAMPLE_FMT_S16, 1);
    if (needed < 0 || room - written < static_cast<std::uint32_t>(needed)) {
        return -1;
    }
    if (!ensureResampler()) {
        return -1;
    }
    std::uint8_t* out = pcm + written;
    if (swr_convert(m_resampler, &out, frame.nb_samples,
                    const_cast<const std::uint8_t**>(frame.extended_data), frame.nb_samples) < 0) {
        return -1;
    }
    written += static_cast<std::uint32_t>(needed);
    return 0;
}

/** Makes the resampler fit the context; false, and no resampler, on failure. */
bool DecoderIsolated_FFmpeg::ensureResampler()
{
    if (m_context->channel_layout == 0) {
        m_context->channel_layout =
            static_cast<std::uint64_t>(av_get_default_channel_layout(m_context->channels));
    }
    const std::uint64_t layout = m_context->channel_layout;
    if (m_resampler != nullptr && layout == m_cachedLayout && m_context->sample_fmt == m_cachedFormat &&
        m_context->sample_rate == m_cachedRate) {
        return true;
    }
    if (av_get_channel_layout_nb_channels(layout) != m_context->channels) {
        swr_free(&m_resampler);
        return false; // the resampler would reach for channels that the frames don't have
    }
    m_resampler =
        swr_alloc_set_opts(m_resampler, static_cast<std::int64_t>(layout), AV_SAMPLE_FMT_S16,
                           m_context->sample_rate, static_cast<std::int64_t>(layout), m_context->sample_fmt,
                           m_context->sample_rate, m_context->log_level_offset, nullptr);
    if (m_resampler == nullptr || swr_init(m_resampler) < 0) {
        swr_free(&m_resampler);
        return false;
    }
    m_cachedLayout = layout;
    m_cachedFormat = m_context->sample_fmt;
    m_cachedRate = m_context->sample_rate;
    return true;
}
