#pragma once

#include "standins/framesmith/FrameSmithErrors.h"

#include <cstddef>
#include <cstdint>

namespace framesmith {

/** A source of captured sound: 16-bit mono samples at 8000 Hz, in real time. */
class CaptureSource
{
public:
    CaptureSource() = default;
    virtual ~CaptureSource() = default;
    CaptureSource(const CaptureSource&) = delete;
    CaptureSource& operator=(const CaptureSource&) = delete;

    /** Opens the source. Called once. */
    virtual Code start() = 0;

    /**
     * Waits until @p count samples are recorded and writes them. Called on the capture thread.
     * @return false when the source was stopped
     */
    virtual bool read(std::int16_t* samples, std::size_t count) = 0;

    /** Ends a waiting read, and all later ones, from another thread. */
    virtual void stop() = 0;
};

} // namespace framesmith
