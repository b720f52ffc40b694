#include "audio/TalkPacketDecoder.h"

#include "audio/PacketHeader.h"
#include "src/vocabulary/StreamType.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/channel_layout.h>
}

#include <cstring>

namespace {

constexpr int maxBitstreamSize = 16384; // bytes; two seconds of sound

} // namespace

TalkPacketDecoder::TalkPacketDecoder() : m_frame(av_frame_alloc()), m_packet(av_packet_alloc())
{
    const AVCodec* codec = avcodec_find_decoder(AV_CODEC_ID_PCM_MULAW);
    m_context.reset(codec != nullptr ? avcodec_alloc_context3(codec) : nullptr);
    if (m_context == nullptr) {
        return;
    }
    m_context->sample_rate = sampleRate;
    av_channel_layout_default(&m_context->ch_layout, 1);
    if (avcodec_open2(m_context.get(), codec, nullptr) < 0) {
        m_context.reset();
    }
}

std::optional<TalkBitstream> TalkPacketDecoder::bitstreamOf(const QByteArray& packet)
{
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(packet.constData());
    const auto header = PacketHeader::fromBytes(bytes, static_cast<std::size_t>(packet.size()));
    if (!header || header->streamType != StreamType::G711MuLaw || header->channels != 1 ||
        header->sampleRate != sampleRate || packet.size() - header->length > maxBitstreamSize) {
        return std::nullopt;
    }
    return TalkBitstream{header->position, header->captureTime, packet.mid(header->length)};
}

std::optional<DecodedTalk> TalkPacketDecoder::decode(const QByteArray& packet)
{
    const auto bitstream = bitstreamOf(packet);
    if (!bitstream || m_context == nullptr) {
        return std::nullopt;
    }
    const int size = bitstream->muLaw.size();
    DecodedTalk talk;
    talk.position = bitstream->position;
    talk.captureTime = bitstream->captureTime;
    if (size == 0) {
        return talk;
    }
    if (av_new_packet(m_packet.get(), size) < 0) {
        return std::nullopt;
    }
    std::memcpy(m_packet->data, bitstream->muLaw.constData(), static_cast<std::size_t>(size));
    const int sent = avcodec_send_packet(m_context.get(), m_packet.get());
    av_packet_unref(m_packet.get());
    if (sent < 0 || avcodec_receive_frame(m_context.get(), m_frame.get()) < 0) {
        return std::nullopt;
    }
    const auto* samples = reinterpret_cast<const std::int16_t*>(m_frame->data[0]);
    talk.samples.assign(samples, samples + m_frame->nb_samples);
    av_frame_unref(m_frame.get());
    return talk;
}
