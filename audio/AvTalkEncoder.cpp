#include "audio/AvTalkEncoder.h"

#include "audio/AdtsHeader.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/channel_layout.h>
}

#include <algorithm>
#include <cstring>

namespace {

constexpr int aacBitRate = 32000; // bit/s
constexpr float fullScale = 32768.0F;

/** The ADTS header of an AAC-LC frame, mono. */
QByteArray adtsHeader(int sampleRate, int payloadSize)
{
    constexpr int lowComplexity = 2;
    return AdtsHeader::make(lowComplexity, AdtsHeader::indexOf(sampleRate).value_or(0), 1, payloadSize);
}

} // namespace

AvTalkEncoder::AvTalkEncoder(int codecId, const TalkFormat& format)
    : TalkEncoder(format), m_frame(av_frame_alloc()), m_packet(av_packet_alloc())
{
    if (m_frame == nullptr || m_packet == nullptr || !open(codecId)) {
        m_context.reset();
    }
}

bool AvTalkEncoder::open(int codecId)
{
    const AVCodec* codec = avcodec_find_encoder(static_cast<AVCodecID>(codecId));
    m_context.reset(codec != nullptr ? avcodec_alloc_context3(codec) : nullptr);
    if (m_context == nullptr) {
        return false;
    }
    m_context->sample_rate = format().sampleRate;
    m_context->sample_fmt = codecId == AV_CODEC_ID_AAC ? AV_SAMPLE_FMT_FLTP : AV_SAMPLE_FMT_S16;
    m_context->bit_rate = codecId == AV_CODEC_ID_AAC ? aacBitRate : 0;
    av_channel_layout_default(&m_context->ch_layout, 1);
    if (avcodec_open2(m_context.get(), codec, nullptr) < 0) {
        return false;
    }
    m_frame->format = m_context->sample_fmt;
    m_frame->sample_rate = format().sampleRate;
    m_frame->nb_samples = format().frameSamples;
    av_channel_layout_default(&m_frame->ch_layout, 1);
    return av_frame_get_buffer(m_frame.get(), 0) >= 0;
}

QByteArray AvTalkEncoder::encode(const std::int16_t* samples)
{
    if (av_frame_make_writable(m_frame.get()) < 0) {
        return QByteArray();
    }
    const auto count = static_cast<std::size_t>(format().frameSamples);
    if (m_context->sample_fmt == AV_SAMPLE_FMT_FLTP) {
        auto* out = reinterpret_cast<float*>(m_frame->data[0]);
        std::transform(samples, samples + count, out,
                       [](std::int16_t sample) { return static_cast<float>(sample) / fullScale; });
    } else {
        std::memcpy(m_frame->data[0], samples, count * sizeof(std::int16_t));
    }
    m_frame->pts = m_frame->pts == AV_NOPTS_VALUE ? 0 : m_frame->pts + format().frameSamples;
    if (avcodec_send_frame(m_context.get(), m_frame.get()) < 0 ||
        avcodec_receive_packet(m_context.get(), m_packet.get()) < 0) {
        return QByteArray();
    }
    QByteArray bitstream(reinterpret_cast<const char*>(m_packet->data), m_packet->size);
    av_packet_unref(m_packet.get());
    return m_context->codec_id == AV_CODEC_ID_AAC
               ? adtsHeader(format().sampleRate, bitstream.size()) + bitstream
               : bitstream;
}
