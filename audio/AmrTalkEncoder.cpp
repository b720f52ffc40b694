#include "audio/AmrTalkEncoder.h"

#include <opencore-amrnb/interf_enc.h>

namespace {

constexpr int withoutDtx = 0;
constexpr int maxFrameSize = 32; // bytes

} // namespace

AmrTalkEncoder::AmrTalkEncoder(const TalkFormat& format)
    : TalkEncoder(format), m_state(Encoder_Interface_init(withoutDtx))
{
}

AmrTalkEncoder::~AmrTalkEncoder()
{
    if (m_state != nullptr) {
        Encoder_Interface_exit(m_state);
    }
}

QByteArray AmrTalkEncoder::encode(const std::int16_t* samples)
{
    QByteArray frame(maxFrameSize, '\0');
    const int size =
        Encoder_Interface_Encode(m_state, MR122, samples, reinterpret_cast<unsigned char*>(frame.data()), 0);
    frame.resize(size > 0 ? size : 0);
    return frame;
}
