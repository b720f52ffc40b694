#pragma once

#include "server/devices/onvif/PacketPace.h"
#include "server/devices/onvif/RtpEncoder.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

/**
 * Sends what is said to one camera, from a thread of its own, so that a camera that does not read holds up
 * nobody else. What is older than maxAge is dropped, so that a camera that wakes up plays nothing old. say,
 * hold and stop may be called on any thread.
 */
class TalkSender
{
public:
    /** By which sound grows old. */
    using Clock = std::chrono::steady_clock;
    using Send = std::function<void(const RtpPayload&)>; ///< On the sender's thread; may block.

    static constexpr std::chrono::milliseconds maxAge{500}; ///< Of sound that is still sent.

    /** @param evenPace see CameraSettings */
    TalkSender(std::unique_ptr<RtpEncoder> encoder, bool evenPace, Send send);

    /** Waits for the thread: what blocks in Send must have been freed before. */
    ~TalkSender();
    TalkSender(const TalkSender&) = delete;
    TalkSender& operator=(const TalkSender&) = delete;

    /** Queues sound. @param position of the first sample @param muLaw 8000 Hz mono */
    void say(std::uint32_t position, const QByteArray& muLaw);

    /** Sends nothing as long as it is held. */
    void hold(bool held);

    /** Sends nothing more. */
    void stop();

private:
    struct Said
    {
        std::uint32_t position;
        QByteArray muLaw;
        Clock::time_point time;
    };

    void run();
    bool takeNext(Said& said);
    bool waitForTurn(std::chrono::milliseconds duration, Clock::time_point said);

    std::unique_ptr<RtpEncoder> m_encoder; ///< Of the thread.
    bool m_evenPace;
    Send m_send;
    PacketPace m_pace;  ///< Of the thread.
    std::mutex m_mutex; ///< Guards what follows.
    std::condition_variable m_changed;
    std::deque<Said> m_queue; ///< Bounded by maxAge and maxQueued.
    bool m_held = false;
    bool m_stopped = false;
    std::thread m_thread; ///< Last: it uses the others.
};
