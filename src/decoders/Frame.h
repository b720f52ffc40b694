#pragma once

#include "src/decoders/FrameQueue.h"

extern "C" {
#include <libavutil/frame.h>
}

/** A frame of libavcodec that lives in a FrameQueue. */
struct Frame : AVFrame
{
    std::atomic<std::uint32_t> references{0};              ///< Number of holders; 0 in the pool.
    QRNL::SDK::Utility::FrameQueue<Frame>::OwnerPtr owner; ///< The pool to return to; null in the pool.

    Frame() : AVFrame{} { av_frame_unref(this); } // gives the fields their start values

    /** Releases the buffers. */
    static void clear(Frame& frame) { av_frame_unref(&frame); }
};
