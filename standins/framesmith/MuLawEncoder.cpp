#include "standins/framesmith/MuLawEncoder.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/channel_layout.h>
}

#include <cstring>

namespace framesmith {

MuLawEncoder::MuLawEncoder() : m_frame(av_frame_alloc()), m_packet(av_packet_alloc())
{
    const AVCodec* codec = avcodec_find_encoder(AV_CODEC_ID_PCM_MULAW);
    m_context.reset(codec != nullptr ? avcodec_alloc_context3(codec) : nullptr);
    if (m_context == nullptr) {
        return;
    }
    m_context->sample_fmt = AV_SAMPLE_FMT_S16;
    m_context->sample_rate = 8000;
    av_channel_layout_default(&m_context->ch_layout, 1);
    if (avcodec_open2(m_context.get(), codec, nullptr) < 0) {
        m_context.reset();
    }
}

bool MuLawEncoder::encode(const std::int16_t* samples, std::size_t count, std::uint8_t* out)
{
    if (m_context == nullptr || m_frame == nullptr || m_packet == nullptr) {
        return false;
    }
    av_frame_unref(m_frame.get());
    m_frame->format = AV_SAMPLE_FMT_S16;
    m_frame->sample_rate = m_context->sample_rate;
    m_frame->nb_samples = static_cast<int>(count);
    if (av_channel_layout_copy(&m_frame->ch_layout, &m_context->ch_layout) < 0 ||
        av_frame_get_buffer(m_frame.get(), 0) < 0) {
        return false;
    }
    std::memcpy(m_frame->data[0], samples, count * sizeof *samples);
    if (avcodec_send_frame(m_context.get(), m_frame.get()) < 0 ||
        avcodec_receive_packet(m_context.get(), m_packet.get()) < 0) {
        return false;
    }
    const bool complete = m_packet->size >= 0 && static_cast<std::size_t>(m_packet->size) == count;
    if (complete) {
        std::memcpy(out, m_packet->data, count);
    }
    av_packet_unref(m_packet.get());
    return complete;
}

} // namespace framesmith
