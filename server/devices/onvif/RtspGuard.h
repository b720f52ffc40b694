#pragma once

#include "server/devices/onvif/RtspSocket.h"

#include <QByteArray>
#include <QString>

#include <gst/gst.h>
#include <gst/rtsp/gstrtspextension.h>

#include <atomic>
#include <chrono>
#include <memory>

/**
 * Sees each answer of a camera before GStreamer's rtspsrc does, and changes what that would believe too much:
 *
 * - challenges of a login are written anew, as rtspsrc reads beyond the end of some;
 * - it is sent to other addresses of the same server alone, and only a few times: another server would get
 *   the login and the sound;
 * - a PLAY or RECORD that the camera does not have is refused, which rtspsrc takes for consent.
 *
 * and it can end a session that hangs. It is an extension of rtspsrc (GstRTSPExtension): each rtspsrc makes
 * one of its own. The questions may be asked on any thread.
 */
class RtspGuard : public std::enable_shared_from_this<RtspGuard>
{
public:
    static constexpr int maxRedirects = 5; ///< In a session.

    /** Makes the guard of one session, to be owned by a shared pointer. @param address URL of the stream */
    explicit RtspGuard(const QString& address);

    /**
     * Makes an rtspsrc at the address whose answers all go through this guard. GStreamer has been set up.
     *
     * @return a floating reference; null when GStreamer's plug-ins for RTSP are missing
     */
    GstElement* makeSource();

    /**
     * Ends a pipeline with the rtspsrc, and cuts its connection when that does not end by itself.
     *
     * @param patience before it is cut
     */
    void end(GstElement* pipeline, std::chrono::milliseconds patience);

    /** Returns the connection for requests. */
    RtspSocket& socket() { return m_socket; }

    /** Whether the camera wanted to be asked at another server, which gets nothing, least of all the login.
     */
    bool wasSentElsewhere() const { return m_wasSentElsewhere; }

    /** Whether the camera wanted to be asked at one of its addresses after the other. */
    bool wasSentTooOften() const { return m_redirects > maxRedirects; }

private:
    struct Element;

    static GType type();
    static GstRTSPResult onRequest(GstRTSPExtension* extension, GstRTSPMessage* request);
    static void initElement(GTypeInstance* instance, gpointer theClass);
    static void finalizeElement(GObject* object);
    static GstRTSPResult onAnswer(GstRTSPExtension* extension, GstRTSPMessage* request,
                                  GstRTSPMessage* answer);

    void check(GstRTSPMessage& request, GstRTSPMessage& answer);
    bool mayFollow(GstRTSPMessage& request, GstRTSPMessage& answer);

    const QByteArray m_address;
    RtspSocket m_socket;
    bool m_isAttached = false; ///< An rtspsrc has taken the guard.
    std::atomic<bool> m_wasSentElsewhere{false};
    std::atomic<int> m_redirects{0};
};
