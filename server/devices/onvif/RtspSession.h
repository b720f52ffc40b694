#pragma once

#include "server/devices/CameraBackend.h"
#include "server/devices/onvif/GstPtr.h"
#include "server/devices/onvif/OnvifConfig.h"
#include "server/devices/onvif/PacketRate.h"
#include "server/devices/onvif/RtpDecoder.h"
#include "server/devices/onvif/RtpEncoder.h"
#include "server/devices/onvif/RtspGuard.h"
#include "server/devices/onvif/StreamChoice.h"
#include "system/SocketFlow.h"

#include <gio/gio.h>
#include <gst/gst.h>
#include <gst/rtsp/gstrtspmessage.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>

/** Who hears what comes in an RTSP session. Called on GStreamer's threads. */
class RtspSessionListener
{
public:
    virtual ~RtspSessionListener() = default;

    /** The camera sent a packet of sound or an RTCP report. */
    virtual void sessionIsAlive() {}
    /** The camera says something. */
    virtual void sessionSpoke(const VoicePacket& /*packet*/) {}
    /** The camera shows something: a packet of its video. */
    virtual void sessionShowed(const RtpVoice& /*packet*/) {}
};

/**
 * One RTSP session with a camera: a pipeline around GStreamer's rtspsrc. How it goes is in its messages:
 * PROGRESS of the type COMPLETE with the code "request" when the session plays, ERROR, or WARNING with
 * GST_RESOURCE_ERROR_READ when the camera closes the connection.
 *
 *   push --> rtspsrc "push-backchannel-buffer" --> camera
 *   sessionSpoke <-- RtpDecoder <-- appsink <-- rtspsrc <-- camera
 *   sessionShowed <----------------'
 *
 * Used by one thread, but for push.
 */
class RtspSession
{
public:
    /** @param camera outlives the session; its address is the URL of its stream @param listener the same */
    RtspSession(const CameraRecord& camera, const OnvifConfig& config, RtspSessionListener& listener);

    /** Calls stop. */
    ~RtspSession();
    RtspSession(const RtspSession&) = delete;
    RtspSession& operator=(const RtspSession&) = delete;

    /** How the session is opened. */
    enum class Way
    {
        Play,        ///< With the loudspeaker, as ONVIF has it.
        Record,      ///< The same with RECORD in place of PLAY, as some cameras want it for what they hear.
        Description, ///< Without the loudspeaker.
        Video,       ///< Its video alone, inside the RTSP connection.
    };

    /**
     * Starts to open the session.
     *
     * @return false when GStreamer's plug-ins for RTSP are missing
     */
    bool start(Way way);

    /** Waits for the next message; null when there is none in time. Cuts the connection of a flood. */
    GstPtr<GstMessage> next(std::chrono::milliseconds patience);

    /** Returns what was chosen from the camera's description; empty before it came. */
    std::optional<StreamChoice> choice() const;

    /** Returns the same of its video, for a session of videos. */
    std::optional<SdpFormats::Video> video() const;

    /** Returns what watches over the answers of a session that was started. */
    const RtspGuard& guard() const { return *m_guard; }

    /** Whether the camera wanted its sound to be sent to another host, which gets nothing. */
    bool streamsElsewhere() const { return m_streamsElsewhere; }

    /** Whether the camera sent more than answers and sound, which cut its connection. */
    bool isFlooded() const { return m_flooded; }

    /** Returns what has gone through the connection for requests; empty where that is not known. */
    std::optional<SocketFlow> flow() const;

    /** Whether the last request was a PLAY. */
    bool hasAskedToPlay() const { return m_hasAskedToPlay; }

    /** Whether the camera's certificate was not trusted, which ends the session. */
    bool isUntrusted() const { return m_untrusted; }

    /**
     * Sends one packet to the stream that was chosen for talks, when the session plays. May wait for the
     * camera, until stop. One thread at a time; not after the destructor began.
     */
    void push(const RtpPayload& payload);

    /**
     * Ends the session with a TEARDOWN, which the camera has a short time to answer; without one when the
     * camera has not taken by then what is being pushed.
     */
    void stop();

private:
    static void onDescription(GstElement* source, GstSDPMessage* description, RtspSession* session);
    static gboolean onStream(GstElement* source, guint stream, GstCaps* caps, RtspSession* session);
    static void onPad(GstElement* source, GstPad* pad, RtspSession* session);
    static void onManager(GstElement* source, GstElement* manager, RtspSession* session);
    static void onElement(GstBin* bin, GstBin* parent, GstElement* element, RtspSession* session);
    static gboolean onRequest(GstElement* source, GstRTSPMessage* request, RtspSession* session);
    static gboolean onCertificate(GstElement* source, GTlsConnection* connection,
                                  GTlsCertificate* certificate, GTlsCertificateFlags errors,
                                  RtspSession* session);
    void watchForFloods();

    bool beginToPush();
    void endPushing();
    bool endPushes();
    void hear(GstSample* sample);

    const CameraRecord& m_camera;
    const OnvifConfig m_config;
    RtspSessionListener& m_listener;
    std::shared_ptr<RtspGuard> m_guard; ///< Of the rtspsrc.
    GstPtr<GstElement> m_pipeline;
    GstPtr<GstElement> m_source; ///< The rtspsrc.
    GstPtr<GstBus> m_bus;

    mutable std::mutex m_mutex; ///< Guards what GStreamer's threads share with the user's.
    std::optional<StreamChoice> m_choice;
    std::optional<SdpFormats::Video> m_video;
    std::optional<int>
        m_heardType; ///< Payload type of what is decoded: that of the first pad with a decoder.
    std::unique_ptr<RtpDecoder> m_decoder;
    PacketRate m_rate; ///< Of what the camera says.
    PacketRate m_videoRate{PacketRate::maxVideoPackets};
    bool m_isPushing = false;  ///< Somebody is in push.
    bool m_isStopping = false; ///< Nobody may begin to push.
    std::condition_variable m_pushed;

    Way m_way = Way::Play; ///< Changed by start alone.
    std::atomic<bool> m_hasAskedToPlay{false};
    std::atomic<bool> m_streamsElsewhere{false};
    std::atomic<bool> m_untrusted{false};
    std::atomic<unsigned> m_heard{0}; ///< Packets.

    // Of who waits for messages.
    unsigned m_heardBefore = 0;
    std::int64_t m_receivedBefore = 0; ///< Bytes, when the last packet was heard.
    bool m_flooded = false;

    std::atomic<bool> m_isMute{false}; ///< Nothing may be requested any more.

    // Of what is pushed.
    std::uint16_t m_sequence = 0;
    const std::uint32_t m_ssrc;
    const std::uint32_t m_timeOffset;
};
