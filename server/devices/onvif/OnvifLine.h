#pragma once

#include "server/devices/CameraBackend.h"
#include "server/devices/onvif/LineRefusal.h"
#include "server/devices/onvif/LineWatchdog.h"
#include "server/devices/onvif/OnvifConfig.h"
#include "server/devices/onvif/RtspSession.h"
#include "server/devices/onvif/TalkRecorder.h"
#include "server/devices/onvif/TalkSender.h"

#include <atomic>
#include <memory>
#include <mutex>

/** Who hears how a line goes. Called on threads of the line, one at a time; the calls must not block. */
class LineListener
{
public:
    virtual ~LineListener() = default;

    /** What is said from now on reaches the camera. */
    virtual void lineOpened() = 0;
    /** The line does not open. @param returnCode see ReturnCode @param reason for people */
    virtual void lineRefused(const QString& returnCode, const QString& reason) = 0;
    /** The open line is gone. @param reason for people */
    virtual void lineLost(const QString& reason) = 0;
    /** The camera says something. */
    virtual void lineSpoke(const VoicePacket& packet) = 0;
    /**
     * The camera is silent: ask it on another connection, and call answered. rtspsrc's own questions are of
     * no use: each interrupts what it sends and reads, and one that meets the end of the line may block that
     * end.
     */
    virtual void lineAsks() = 0;
    /** Nothing is left of the line. */
    virtual void lineClosed() = 0;
};

/**
 * A talk's line to a camera by RTSP, with its audio backchannel (ONVIF Streaming Specification, clause 5.3):
 * it opens or is refused, is watched, and ends.
 *
 *   say --> TalkSender --> RtspSession --> camera
 *   lineSpoke <-- RtspSession <-- camera
 *
 * Whatever may block happens on the line's own thread, which runs run to the end, or on those of GStreamer.
 */
class OnvifLine : private RtspSessionListener
{
public:
    /**
     * @param camera   its address is the URL of its stream
     * @param listener outlives the line, or is forgotten before
     */
    OnvifLine(CameraRecord camera, const OnvifConfig& config, LineListener& listener);
    ~OnvifLine() override;
    OnvifLine(const OnvifLine&) = delete;
    OnvifLine& operator=(const OnvifLine&) = delete;

    /** Opens the line, keeps it until close or a loss, and closes it. */
    void run();

    /** Sends sound, when the line is open. Any thread. @param muLaw 8000 Hz mono */
    void say(std::uint32_t position, const QByteArray& muLaw);

    /** Starts to close the line. Any thread. */
    void close();

    /** No call of the listener is under way, or comes, when it returns. Any thread but the line's. */
    void forgetListener();

    /** Takes an answer to lineAsks. Any thread. */
    void answered();

    /** Whether run has returned. Any thread. */
    bool hasEnded() const { return m_ended; }

private:
    using Clock = std::chrono::steady_clock;

    void sessionIsAlive() override;
    void sessionSpoke(const VoicePacket& packet) override;

    template<class Call>
    void report(Call call);
    void refuse(const LineRefusal& refusal);
    void lose(const QString& reason);
    void flooded();

    bool startSession(RtspSession::Way way);
    void takeDown();
    void watch();
    void watchOpening(Clock::time_point now);
    void watchOpen(Clock::time_point now);
    void handle(GstMessage* message);
    void handleError(GstMessage* message);
    bool describesItself();
    void open();
    bool startRecording();
    void keepRecording();
    void dropRecorder();
    void adjustSockets();

    enum class State
    {
        Opening,
        Settling, ///< Open, until the camera's readiness delay is over.
        Open,
        Ended,
    };

    const CameraRecord m_camera;
    const OnvifConfig m_config;
    std::mutex m_listening; ///< Guards the next.
    LineListener* m_listener;

    // Of the line's thread.
    std::unique_ptr<RtspSession> m_session;
    State m_state = State::Opening;
    Clock::time_point m_deadline; ///< For the line to open, or to be ready.
    LineWatchdog m_watchdog;
    bool m_plays = false;             ///< The session does.
    bool m_hasTriedToRecord = false;  ///< The camera refused to PLAY.
    Clock::time_point m_lifeDeadline; ///< For a session that records to show that the camera takes part.

    std::mutex m_streams; ///< Guards what other threads use, too.
    std::unique_ptr<TalkSender> m_sender;
    std::unique_ptr<TalkRecorder> m_recorder; ///< Null when no talks are kept.

    std::atomic<bool> m_hasShownLife{false}; ///< The camera has sent something.
    std::atomic<bool> m_closing{false};
    std::atomic<bool> m_ended{false};
};
