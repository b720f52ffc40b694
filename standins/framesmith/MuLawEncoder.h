#pragma once

#include "audio/FfmpegPtr.h"

#include <cstddef>
#include <cstdint>

namespace framesmith {

/** An encoder of 16-bit PCM at 8000 Hz mono to mu-law (ITU-T G.711). Used by one thread at a time. */
class MuLawEncoder
{
public:
    MuLawEncoder();

    /** Writes one byte for each sample to @p out; returns false when the codec fails. */
    bool encode(const std::int16_t* samples, std::size_t count, std::uint8_t* out);

private:
    FfmpegPtr<AVCodecContext> m_context; ///< Null when the encoder did not open.
    FfmpegPtr<AVFrame> m_frame;
    FfmpegPtr<AVPacket> m_packet;
};

} // namespace framesmith
