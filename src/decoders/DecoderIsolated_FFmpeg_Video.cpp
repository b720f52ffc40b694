#include "src/decoders/DecoderIsolated_FFmpeg.h"
#include "src/decoders/PcmBlock.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libswscale/swscale.h>
}

namespace {

constexpr int pictureAlignment = 32;     // bytes
constexpr std::int32_t frameVersion = 2; // of the record that QueryFrame fills

bool handedOutAsIs(AVPixelFormat format)
{
    return format == AV_PIX_FMT_YUV420P || format == AV_PIX_FMT_YUVJ420P;
}

/** The scaler does not know the full-range formats; their samples lie as in the others. */
AVPixelFormat scalerFormat(AVPixelFormat format)
{
    switch (format) {
    case AV_PIX_FMT_YUVJ422P:
        return AV_PIX_FMT_YUV422P;
    case AV_PIX_FMT_YUVJ444P:
        return AV_PIX_FMT_YUV444P;
    case AV_PIX_FMT_YUVJ440P:
        return AV_PIX_FMT_YUV440P;
    case AV_PIX_FMT_YUVJ411P:
        return AV_PIX_FMT_YUV411P;
    default:
        return format;
    }
}

} // namespace

std::int32_t DecoderIsolated_FFmpeg::DecodeVideo(DecodedPicture* picture, std::uint32_t* state,
                                                 const EncodedChunk* chunk)
{
    if (!m_decoded.empty()) {
        FramePool::release(takeFront()); // the picture of the call before
    }
    if (sendAndCollect(*chunk, pcmBlockSize) < 0) {
        return -1;
    }
    if (m_decoded.empty()) {
        *state = NoPicture;
        return static_cast<std::int32_t>(chunk->size);
    }
    const Frame* front = m_decoded.front();
    // A stream may change its shape while older pictures wait; such a picture can't be read as the context
    // says.
    if (front->format != m_context->pix_fmt || front->width != m_context->width ||
        front->height != m_context->height) {
        return -1;
    }
    if (!handedOutAsIs(m_context->pix_fmt)) {
        Frame* target = scaledPicture(*front);
        if (target == nullptr) {
            return -1;
        }
        FramePool::release(m_decoded.front());
        m_decoded.front() = target;
        front = target;
    }
    for (int plane = 0; plane < 3; ++plane) {
        picture->planes[plane] = front->data[plane];
        picture->strides[plane] = front->linesize[plane];
    }
    picture->width = m_context->width;
    picture->height = m_context->height;
    *state = PictureReady;
    return static_cast<std::int32_t>(chunk->size);
}

/** The picture as 4:2:0 in a frame of its own; null on failure. */
Frame* DecoderIsolated_FFmpeg::scaledPicture(const Frame& source)
{
    Frame* target = m_pictureFrames.acquire();
    if (target->buf[0] == nullptr || target->width != m_context->width ||
        target->height != m_context->height) {
        av_frame_unref(target);
        target->format = AV_PIX_FMT_YUV420P;
        target->width = m_context->width;
        target->height = m_context->height;
        if (av_frame_get_buffer(target, pictureAlignment) < 0) {
            FramePool::release(target);
            return nullptr;
        }
    }
    m_scaler = sws_getCachedContext(m_scaler, m_context->width, m_context->height,
                                    scalerFormat(m_context->pix_fmt), m_context->width, m_context->height,
                                    AV_PIX_FMT_YUV420P, SWS_FAST_BILINEAR, nullptr, nullptr, nullptr);
    if (m_scaler != nullptr) {
        sws_scale(m_scaler, source.data, source.linesize, 0, m_context->height, target->data,
                  target->linesize);
    }
    return target;
}

std::int32_t DecoderIsolated_FFmpeg::QueryFrame(DecodedPicture* picture, std::int32_t version)
{
    if (version < frameVersion) {
        return unsupportedVersion;
    }
    if (m_decoded.empty()) {
        return -1;
    }
    Frame* front = m_decoded.front();
    FramePool::addReference(front);
    picture->frame = front;
    picture->addReference = [](void* frame) { FramePool::addReference(static_cast<Frame*>(frame)); };
    picture->release = [](void* frame) { FramePool::release(static_cast<Frame*>(frame)); };
    return 0;
}
