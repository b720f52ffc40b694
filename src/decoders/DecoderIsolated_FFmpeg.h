#pragma once

#include "src/decoders/DecoderContext.h"
#include "src/decoders/Frame.h"

#include <deque>

extern "C" {
#include <libavcodec/codec_id.h>
}

struct AVCodecContext;
struct SwrContext;
struct SwsContext;

/**
 * Decodes AAC, AMR narrow band, G.711 and pictures by libavcodec, on the caller's thread. Audio keeps its
 * rate and channels; only the sample format is converted, to signed 16 bits.
 *
 *   chunk -- avcodec_send_packet --> codec -- avcodec_receive_frame --> m_decoded --> swr_convert --> PCM
 *                                                                           '-------> sws_scale --> picture
 *
 * Frames that do not fit into the caller's room are stored for the next call. Of one chunk, a block of PCM is
 * decoded at most, or the room if that is larger, and one frame; the rest of the chunk is dropped.
 */
class DecoderIsolated_FFmpeg final : public DecoderContext
{
public:
    /** @param context opened; owned from now on */
    explicit DecoderIsolated_FFmpeg(AVCodecContext* context);

    /** Decodes a chunk of a stream of pictures to 4:2:0 with 8 bits a sample. */
    std::int32_t DecodeVideo(DecodedPicture* picture, std::uint32_t* state,
                             const EncodedChunk* chunk) override;
    /** Decodes a chunk to samples. */
    std::int32_t DecodeAudio(std::uint8_t* pcm, std::uint32_t* size, const EncodedChunk* chunk) override;
    /** Frees the codec and the decoder. */
    void Release() override;
    /** Passes the frame of the last picture to the caller, with a reference. */
    std::int32_t QueryFrame(DecodedPicture* picture, std::int32_t version) override;

private:
    using FramePool = QRNL::SDK::Utility::FrameQueue<Frame>;

    ~DecoderIsolated_FFmpeg();

    static std::int64_t pcmSize(const Frame& frame);
    std::int32_t sendAndCollect(const EncodedChunk& chunk, std::int64_t maxPcm);
    Frame* takeFront();
    std::int32_t appendPcm(const Frame& frame, std::uint8_t* pcm, std::uint32_t room, std::uint32_t& written);
    bool ensureResampler();
    Frame* scaledPicture(const Frame& source);

    AVCodecContext* m_context;
    FramePool m_audioFrames;
    SwsContext* m_scaler = nullptr;
    SwrContext* m_resampler = nullptr;
    FramePool m_pictureFrames;
    std::uint64_t m_cachedLayout = 0; ///< What the resampler was built for.
    std::int32_t m_cachedFormat = 0;
    std::int32_t m_cachedRate = 0;
    std::deque<Frame*> m_decoded; ///< Received and not yet consumed; each holds a reference.
};

/**
 * Opens a decoder of libavcodec; null on failure.
 *
 * @param codec              of libavcodec
 * @param sampleRate         Hz; 0 when the codec detects it
 * @param channels           0 when the codec detects them
 * @param bitsPerCodedSample 0 for the codecs of this system
 */
DecoderContext* CreateDecoderFFmpeg(AVCodecID codec, std::uint32_t sampleRate, std::uint32_t channels,
                                    int bitsPerCodedSample);
