#pragma once

#include "audio/FfmpegPtr.h"

#include <QByteArray>
#include <QImage>
#include <QSize>

struct SwsContext;

/** Decodes the video of a camera, which may be anything. Used by one thread at a time. */
class VideoDecoder
{
public:
    static constexpr int maxSide = 4096;          ///< Pixels of the width, and of the height.
    static constexpr int maxPixels = 4096 * 2304; ///< Of a whole picture; of a larger one nothing is kept.
    static constexpr int maxPicturesInUnit = 4;   ///< That are read of one access unit.

    /** Returns whether there is a decoder for H.264. Any thread. */
    static bool isAvailable();

    VideoDecoder();
    ~VideoDecoder();
    VideoDecoder(const VideoDecoder&) = delete;
    VideoDecoder& operator=(const VideoDecoder&) = delete;

    /**
     * Decodes an access unit of H.264 with start codes.
     *
     * @param fitting the result is scaled down to fit into it, and never up; its proportions stay
     * @return null where it gives no whole picture: one that is broken costs those that need it
     */
    QImage decode(const QByteArray& unit, const QSize& fitting);

private:
    QImage toImage(const AVFrame& frame, const QSize& fitting);

    FfmpegPtr<AVCodecContext> m_context; ///< Null without a decoder.
    FfmpegPtr<AVPacket> m_packet;
    FfmpegPtr<AVFrame> m_frame;
    SwsContext* m_scaler = nullptr; ///< Owned; made for the last picture's size.
};
