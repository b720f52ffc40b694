#pragma once

#include "audio/FfmpegPtr.h"

#include <QByteArray>

#include <cstdint>
#include <optional>
#include <vector>

/** One decoded talk packet. */
struct DecodedTalk
{
    std::uint32_t position = 0;        ///< Of the first sample since the talker's microphone started; wraps.
    std::uint64_t captureTime = 0;     ///< Of the last sample, microseconds of the talker's steady clock.
    std::vector<std::int16_t> samples; ///< 8000 Hz mono.
};

/** Decodes the packets of a talk: a PacketHeader, then G.711 mu-law at 8000 Hz mono, by libavcodec. */
class PacketDecoder
{
public:
    static constexpr int sampleRate = 8000; // Hz

    PacketDecoder();

    /** Empty for anything that is not such a packet. */
    std::optional<DecodedTalk> decode(const QByteArray& packet);

private:
    FfmpegPtr<AVCodecContext> m_context; ///< Null when the decoder did not open.
    FfmpegPtr<AVFrame> m_frame;
    FfmpegPtr<AVPacket> m_packet;
};
