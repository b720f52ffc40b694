#pragma once

#include "audio/TalkEncoder.h"

/** The encoder of AMR narrow band at 12.2 kbit/s (3GPP TS 26.071), by OpenCORE: libavcodec has no such
 * encoder. */
class AmrTalkEncoder : public TalkEncoder
{
public:
    /** @param format 8000 Hz, 160 samples */
    explicit AmrTalkEncoder(const TalkFormat& format);
    ~AmrTalkEncoder() override;
    AmrTalkEncoder(const AmrTalkEncoder&) = delete;
    AmrTalkEncoder& operator=(const AmrTalkEncoder&) = delete;

    /** Returns whether the encoder has opened. */
    bool valid() const { return m_state != nullptr; }

    QByteArray encode(const std::int16_t* samples) override;

private:
    void* m_state;
};
