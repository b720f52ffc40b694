#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

struct AVCodecContext;
struct AVFrame;
struct AVPacket;

namespace framesmith {

/** G.711 mu-law (ITU-T G.711) of 16-bit PCM at 8000 Hz mono, by libavcodec. Used by one thread at a time. */
class MuLawEncoder
{
public:
    MuLawEncoder();
    ~MuLawEncoder();
    MuLawEncoder(const MuLawEncoder&) = delete;
    MuLawEncoder& operator=(const MuLawEncoder&) = delete;

    /** Writes one byte a sample to @p out; false when the codec fails. */
    bool encode(const std::int16_t* samples, std::size_t count, std::uint8_t* out);

private:
    AVCodecContext* m_context = nullptr;
    AVFrame* m_frame = nullptr;
    AVPacket* m_packet = nullptr;
};

} // namespace framesmith
