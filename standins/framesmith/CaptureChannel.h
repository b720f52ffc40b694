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
    using SourceFactory = std::function<std::unique_ptr<CaptureSource>()>;

    /** Volume 50 leaves the samples as they are, 100 doubles them, 0 silences them. */
    static constexpr int neutralVolume = 50;
    static constexpr int maxVolume = 100;

    CaptureChannel(const FrameSmithCaptureOptions& options, SourceFactory makeSource);
    ~CaptureChannel();
    CaptureChannel(const CaptureChannel&) = delete;
    CaptureChannel& operator=(const CaptureChannel&) = delete;

    Code start();
    Code stop();

    /** Ends the threads of a capture, which counts as started until it is stopped but gives no more packets.
     * For the end of the application. Nothing happens on the capture thread. */
    void end();

    bool onCaptureThread() const;

    void setVolume(int volume) { m_volume = volume; }
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
