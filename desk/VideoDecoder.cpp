#include "desk/VideoDecoder.h"

#include "protocol/Limits.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libswscale/swscale.h>
}

#include <array>
#include <cstring>

namespace {

constexpr int firstHdLine = 720; // from this height on, colours are those of HDTV unless the video says more
constexpr int fractionBits = 16;
constexpr int one = 1 << fractionBits; // the scaler's neutral contrast and saturation

bool isAllowed(int width, int height)
{
    return width > 0 && height > 0 && width <= VideoDecoder::maxSide && height <= VideoDecoder::maxSide &&
           width * height <= VideoDecoder::maxPixels;
}

/** The scaler does not know the format of full range; its samples lie as in the other. */
AVPixelFormat scalerFormat(int format)
{
    return format == AV_PIX_FMT_YUVJ420P ? AV_PIX_FMT_YUV420P : static_cast<AVPixelFormat>(format);
}

/** The coefficients of a picture's colours (ITU-T H.264, table E-5). */
const int* colours(const AVFrame& frame)
{
    const bool isHd = frame.colorspace == AVCOL_SPC_BT709 ||
                      (frame.colorspace == AVCOL_SPC_UNSPECIFIED && frame.height >= firstHdLine);
    return sws_getCoefficients(isHd ? SWS_CS_ITU709 : SWS_CS_ITU601);
}

} // namespace

bool VideoDecoder::isAvailable()
{
    return avcodec_find_decoder(AV_CODEC_ID_H264) != nullptr;
}

VideoDecoder::VideoDecoder()
{
    const AVCodec* codec = avcodec_find_decoder(AV_CODEC_ID_H264);
    FfmpegPtr<AVCodecContext> context(codec != nullptr ? avcodec_alloc_context3(codec) : nullptr);
    m_packet.reset(av_packet_alloc());
    m_frame.reset(av_frame_alloc());
    if (!context || !m_packet || !m_frame) {
        return;
    }
    context->max_pixels = maxPixels; // beyond it nothing is allocated
    context->thread_count = 1;       // more would hold pictures back
    if (avcodec_open2(context.get(), codec, nullptr) == 0) {
        m_context = std::move(context);
    }
}

VideoDecoder::~VideoDecoder()
{
    sws_freeContext(m_scaler);
}

QImage VideoDecoder::decode(const QByteArray& unit, const QSize& fitting)
{
    if (!m_context || unit.isEmpty() || unit.size() > Limits::maxVideoUnitBytes ||
        av_new_packet(m_packet.get(), unit.size()) != 0) { // with room for what the decoder reads beyond
        return QImage();
    }
    std::memcpy(m_packet->data, unit.constData(), static_cast<std::size_t>(unit.size()));
    const int sent = avcodec_send_packet(m_context.get(), m_packet.get());
    av_packet_unref(m_packet.get());
    QImage image;
    for (int i = 0; sent == 0 && i < maxPicturesInUnit; ++i) {
        if (avcodec_receive_frame(m_context.get(), m_frame.get()) != 0) {
            break;
        }
        const bool isWhole =
            m_frame->decode_error_flags == 0 && (m_frame->flags & AV_FRAME_FLAG_CORRUPT) == 0;
        image = isWhole ? toImage(*m_frame, fitting) : QImage();
        av_frame_unref(m_frame.get());
    }
    return image;
}

QImage VideoDecoder::toImage(const AVFrame& frame, const QSize& fitting)
{
    const AVPixelFormat format = scalerFormat(frame.format);
    if (!isAllowed(frame.width, frame.height) || format != AV_PIX_FMT_YUV420P) {
        return QImage();
    }
    QSize size(frame.width, frame.height);
    if (size.width() > fitting.width() || size.height() > fitting.height()) {
        size = size.scaled(fitting, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
    }
    m_scaler = sws_getCachedContext(m_scaler, frame.width, frame.height, format, size.width(), size.height(),
                                    AV_PIX_FMT_RGB32, SWS_BILINEAR, nullptr, nullptr, nullptr);
    QImage image(size, QImage::Format_RGB32);
    if (m_scaler == nullptr || image.isNull()) {
        return QImage();
    }
    const bool isFull = frame.color_range == AVCOL_RANGE_JPEG || frame.format == AV_PIX_FMT_YUVJ420P;
    sws_setColorspaceDetails(m_scaler, colours(frame), isFull ? 1 : 0, sws_getCoefficients(SWS_CS_DEFAULT), 1,
                             0, one, one);
    const std::array<std::uint8_t*, 4> lines{image.bits(), nullptr, nullptr, nullptr};
    const std::array<int, 4> strides{image.bytesPerLine(), 0, 0, 0};
    const int scaled =
        sws_scale(m_scaler, frame.data, frame.linesize, 0, frame.height, lines.data(), strides.data());
    return scaled == size.height() ? image : QImage();
}
