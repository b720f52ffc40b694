#pragma once

#include "platform/FrameSmith.h"
#include "standins/framesmith/CaptureSource.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace framesmith {

/**
 * Capture of a microphone, packet by packet.
 *
 *   CaptureSource --> volume, mute --> PacketMaker --> callback (capture thread, one packet at a time)
 *
 * start and stop may be called from any thread but the callback's.
 */
class CaptureChannel
{
public:
    /** Makes the source of each capture. */
    using SourceFactory = std::function<std::unique_ptr<CaptureSource>()>;

    static constexpr int neutralVolume = 50; ///< Leaves the samples as they are.
    static constexpr int maxVolume = 100;    ///< Doubles the samples.

    /** Makes a channel whose capture is not running. */
    CaptureChannel(const FrameSmithCaptureOptions& options, SourceFactory makeSource);
    ~CaptureChannel();
    CaptureChannel(const CaptureChannel&) = delete;
    CaptureChannel& operator=(const CaptureChannel&) = delete;

    /** Starts the capture. Returns WrongState when it runs, or the source's error. */
    Code start();

    /** Stops the capture; no callback runs after the return. Returns WrongState when it does not run. */
    Code stop();

    /**
     * Ends the threads of a capture, for the end of the application. The capture still counts as started
     * until it is stopped, but delivers no more packets. Does nothing when called on the capture thread.
     */
    void end();

    /** Returns whether the caller runs on the thread that calls the callback. */
    bool onCaptureThread() const;

    /** Sets the volume, 0 (silence) to maxVolume, for the next packet on. Any thread. */
    void setVolume(int volume) { m_volume = volume; }
    /** Mutes or unmutes the next packets. Any thread. */
    void setMute(bool mute) { m_mute = mute; }

private:
    void run();
    void endThreads();
    void applyVolume(std::int16_t* samples, std::size_t count) const;

    FrameSmithCaptureOptions m_options;
    SourceFactory m_makeSource;
    std::atomic<int> m_volume = neutralVolume;
    std::atomic<bool> m_mute = false;
    std::atomic<std::thread::id> m_threadId;

    std::mutex m_mutex; // guards a start, stop or end against another
    bool m_started = false;
    std::unique_ptr<CaptureSource> m_source;
    std::thread m_thread;
};

} // namespace framesmith
