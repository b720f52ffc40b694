#pragma once

#include <QByteArray>
#include <QList>

extern "C" {
#include <libavcodec/avcodec.h>
}

/** Small streams of pictures, by libavcodec's encoders. */
namespace PictureStream {

/** Brightness of the flat grey picture number @p index. */
inline int luma(int index)
{
    return 40 + 30 * index;
}

/** Motion JPEG, one picture an entry; empty on failure. */
inline QList<QByteArray> motionJpeg(AVPixelFormat format, int width, int height, int count)
{
    QList<QByteArray> stream;
    AVCodecContext* context = avcodec_alloc_context3(avcodec_find_encoder(AV_CODEC_ID_MJPEG));
    context->width = width;
    context->height = height;
    context->pix_fmt = format;
    context->time_base = {1, 25};
    AVFrame* frame = av_frame_alloc();
    frame->format = format;
    frame->width = width;
    frame->height = height;
    AVPacket* packet = av_packet_alloc();
    if (avcodec_open2(context, nullptr, nullptr) == 0 && av_frame_get_buffer(frame, 0) == 0) {
        for (int i = 0; i < count; ++i) {
            av_frame_make_writable(frame);
            for (int plane = 0; plane < 3; ++plane) {
                const bool halfHeight = plane > 0 && format == AV_PIX_FMT_YUVJ420P;
                const int lines = halfHeight ? height / 2 : height;
                std::memset(frame->data[plane], plane == 0 ? luma(i) : 128,
                            static_cast<std::size_t>(frame->linesize[plane]) *
                                static_cast<std::size_t>(lines));
            }
            frame->pts = i;
            if (avcodec_send_frame(context, frame) == 0 && avcodec_receive_packet(context, packet) == 0) {
                stream.append(QByteArray(reinterpret_cast<const char*>(packet->data), packet->size));
                av_packet_unref(packet);
            }
        }
    }
    av_packet_free(&packet);
    av_frame_free(&frame);
    avcodec_free_context(&context);
    return stream;
}

/**
 * Gives a picture other sampling factors in its frame header: one byte, across and down, for the brightness,
 * and one for both colours. The picture holds as long as the products of the two stay what they were.
 */
inline void setSampling(QByteArray& picture, char brightness, char colours)
{
    const int header = picture.indexOf(QByteArray("\xFF\xC0"));
    const int factors = header + 11; // behind size, precision, height, width, count and a component's number
    constexpr int componentSize = 3;
    picture[factors] = brightness;
    picture[factors + componentSize] = colours;
    picture[factors + 2 * componentSize] = colours;
}

} // namespace PictureStream
