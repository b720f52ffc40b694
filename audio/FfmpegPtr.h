#pragma once

#include <memory>

struct AVCodecContext;
struct AVFormatContext;
struct AVFrame;
struct AVPacket;
struct SwrContext;

/** Frees an object of FFmpeg's libraries with all that it owns. */
struct FfmpegDeleter
{
    void operator()(AVCodecContext* context) const; ///< Frees a codec.
    void operator()(AVFormatContext* file) const;   ///< Closes and frees an opened input.
    void operator()(AVFrame* frame) const;          ///< Frees a frame.
    void operator()(AVPacket* packet) const;        ///< Frees a packet.
    void operator()(SwrContext* context) const;     ///< Frees a resampler.
};

/** The owner of an object of FFmpeg's libraries. */
template<class Object>
using FfmpegPtr = std::unique_ptr<Object, FfmpegDeleter>;
