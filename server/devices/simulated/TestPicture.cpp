#include "server/devices/simulated/TestPicture.h"

#include "audio/FfmpegPtr.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <algorithm>
#include <array>
#include <cstdint>

namespace {

/** A colour as JPEG has it: luma and the two chroma differences, full range (ITU-T T.871). */
struct Colour
{
    std::uint8_t y, cb, cr;
};

constexpr std::array<Colour, 8> bars{{{235, 128, 128},
                                      {210, 16, 146},
                                      {170, 166, 16},
                                      {145, 54, 34},
                                      {106, 202, 222},
                                      {81, 90, 240},
                                      {41, 240, 110},
                                      {60, 128, 128}}};
constexpr Colour ground{24, 128, 128};
constexpr Colour light{250, 128, 128};
constexpr int barsEnd = TestPicture::height * 3 / 4;
constexpr int lightWidth = 16; // pixels
constexpr qint64 minute = 60000;

Colour colourAt(int x, int y, int lightStart)
{
    if (y < barsEnd) {
        return bars[static_cast<std::size_t>(x) * bars.size() / TestPicture::width];
    }
    return x >= lightStart && x < lightStart + lightWidth ? light : ground;
}

void draw(AVFrame& frame, int lightStart)
{
    for (int y = 0; y < TestPicture::height; ++y) {
        for (int x = 0; x < TestPicture::width; ++x) {
            const Colour colour = colourAt(x, y, lightStart);
            frame.data[0][y * frame.linesize[0] + x] = colour.y;
            if (x % 2 == 0 && y % 2 == 0) { // one pair of differences for four pixels
                frame.data[1][y / 2 * frame.linesize[1] + x / 2] = colour.cb;
                frame.data[2][y / 2 * frame.linesize[2] + x / 2] = colour.cr;
            }
        }
    }
}

} // namespace

QByteArray TestPicture::at(qint64 time)
{
    const AVCodec* codec = avcodec_find_encoder(AV_CODEC_ID_MJPEG);
    const FfmpegPtr<AVCodecContext> context(codec != nullptr ? avcodec_alloc_context3(codec) : nullptr);
    const FfmpegPtr<AVFrame> frame(av_frame_alloc());
    const FfmpegPtr<AVPacket> packet(av_packet_alloc());
    if (!context || !frame || !packet) {
        return QByteArray();
    }
    context->width = frame->width = width;
    context->height = frame->height = height;
    context->pix_fmt = AV_PIX_FMT_YUVJ420P;
    frame->format = AV_PIX_FMT_YUVJ420P;
    context->time_base = {1, 1};
    if (avcodec_open2(context.get(), codec, nullptr) < 0 || av_frame_get_buffer(frame.get(), 0) < 0) {
        return QByteArray();
    }
    draw(*frame, static_cast<int>(time % minute * (width - lightWidth) / minute));
    if (avcodec_send_frame(context.get(), frame.get()) < 0 ||
        avcodec_receive_packet(context.get(), packet.get()) < 0) {
        return QByteArray();
    }
    return QByteArray(reinterpret_cast<const char*>(packet->data), packet->size);
}
