#pragma once

#include "audio/TalkEncoder.h"

/** AMR narrow band at 12.2 kbit/s (3GPP TS 26.071), by the OpenCORE encoder: libavcodec has none. */
class AmrTalkEncoder : public TalkEncoder
{
public:
    explicit AmrTalkEncoder(const TalkFormat& format);
    ~AmrTalkEncoder() override;
    AmrTalkEncoder(const AmrTalkEncoder&) = delete;
    AmrTalkEncoder& operator=(const AmrTalkEncoder&) = delete;

    bool valid() const { return m_state != nullptr; }

    QByteArray encode(const std::int16_t* samples) override;

private:
    void* m_state;
};
