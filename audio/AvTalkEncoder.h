#pragma once

#include "audio/TalkEncoder.h"

struct AVCodecContext;
struct AVFrame;
struct AVPacket;

/** G.711 (ITU-T G.711) and AAC with ADTS headers (ISO/IEC 13818-7), by libavcodec. */
class AvTalkEncoder : public TalkEncoder
{
public:
    /** @param codecId AVCodecID of G.711 or AAC @param format AAC: 16000 Hz */
    AvTalkEncoder(int codecId, const TalkFormat& format);
    ~AvTalkEncoder() override;
    AvTalkEncoder(const AvTalkEncoder&) = delete;
    AvTalkEncoder& operator=(const AvTalkEncoder&) = delete;

    bool valid() const { return m_context != nullptr; }

    QByteArray encode(const std::int16_t* samples) override;

private:
    bool open(int codecId);

    AVCodecContext* m_context = nullptr;
    AVFrame* m_frame;
    AVPacket* m_packet;
};
