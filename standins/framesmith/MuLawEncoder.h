#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

struct AVCodecContext;
struct AVFrame;
struct AVPacket;

namespace framesmith {

/** An encoder of 16-bit PCM at 8000 Hz mono to mu-law (ITU-T G.711). Used by one thread at a time. */
class MuLawEncoder
{
public:
    MuLawEncoder();
    ~MuLawEncoder();
    MuLawEncoder(const MuLawEncoder&) = delete;
    MuLawEncoder& operator=(const MuLawEncoder&) = delete;

    /** Writes one byte for each sample to @p out; returns false when the codec fails. */
    bool encode(const std::int16_t* samples, std::size_t count, std::uint8_t* out);

private:
    AVCodecContext* m_context = nullptr;
    AVFrame* m_frame = nullptr;
    AVPacket* m_packet = nullptr;
};

} // namespace framesmith
