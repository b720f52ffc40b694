#pragma once

#include "audio/FfmpegPtr.h"
#include "audio/TalkEncoder.h"

/** The encoder of G.711 (ITU-T G.711) and of AAC with ADTS headers (ISO/IEC 13818-7), by libavcodec. */
class AvTalkEncoder : public TalkEncoder
{
public:
    /**
     * @param codecId AVCodecID of G.711 or AAC
     * @param format  AAC: a sample rate that an ADTS header can have
     */
    AvTalkEncoder(int codecId, const TalkFormat& format);

    /** Returns whether the encoder has opened. */
    bool valid() const { return m_context != nullptr; }

    QByteArray encode(const std::int16_t* samples) override;

private:
    bool open(int codecId);

    FfmpegPtr<AVCodecContext> m_context; ///< Null when the encoder did not open.
    FfmpegPtr<AVFrame> m_frame;
    FfmpegPtr<AVPacket> m_packet;
};
