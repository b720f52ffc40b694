#pragma once

#include "server/devices/CameraBackend.h"
#include "server/devices/CameraVideo.h"
#include "server/devices/onvif/H264Assembler.h"
#include "server/devices/onvif/LineRefusal.h"
#include "server/devices/onvif/LineWork.h"
#include "server/devices/onvif/OnvifConfig.h"
#include "server/devices/onvif/RtspSession.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>

/** Who sees what a video's line brings. Called on threads of the line; the calls must not block. */
class VideoLineListener
{
public:
    virtual ~VideoLineListener() = default;

    /** The next picture. */
    virtual void lineShowed(const VideoUnit& unit) = 0;
    /** There is no video, or no more of it: the last call. */
    virtual void lineEnded(const LineRefusal& why) = 0;
};

/**
 * The line of a camera's video by RTSP:
 *
 *   lineShowed <-- H264Assembler <-- RtspSession <-- camera
 *
 * Whatever may block happens on the line's own thread, or on those of GStreamer.
 */
class VideoLine : public LineWork, private RtspSessionListener
{
public:
    /**
     * @param camera   its address is the URL of its stream
     * @param listener outlives the line, or is forgotten before
     */
    VideoLine(CameraRecord camera, const OnvifConfig& config, VideoLineListener& listener);

    void run() override;
    void close() override { m_closing = true; }
    void forgetListener() override;
    bool isClosing() const override { return m_closing; }
    bool hasEnded() const override { return m_ended; }

private:
    using Clock = std::chrono::steady_clock;

    void sessionShowed(const RtpVoice& packet) override;
    void watch();
    void handle(GstMessage* message);
    void end(const LineRefusal& why);

    const CameraRecord m_camera;
    const OnvifConfig m_config;
    std::mutex m_listening; ///< Guards the next.
    VideoLineListener* m_listener;

    // Of the line's thread.
    std::unique_ptr<RtspSession> m_session;
    bool m_isOver = false;

    // Of the thread on which GStreamer hands over packets.
    std::optional<H264Assembler> m_assembler;

    std::atomic<Clock::time_point> m_lastPacket;
    std::atomic<bool> m_hasShown{false};
    std::atomic<bool> m_closing{false};
    std::atomic<bool> m_ended{false};
};
