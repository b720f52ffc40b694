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
    void operator()(AVCodecContext* context) const;
    void operator()(AVFormatContext* file) const; ///< Of an opened input, which it closes.
    void operator()(AVFrame* frame) const;
    void operator()(AVPacket* packet) const;
    void operator()(SwrContext* context) const;
};

/** The owner of an object of FFmpeg's libraries. */
template<class Object>
using FfmpegPtr = std::unique_ptr<Object, FfmpegDeleter>;
