#pragma once

#include "server/devices/onvif/GstPtr.h"
#include "system/SocketFlow.h"

#include <mutex>

/**
 * The TCP connection of an rtspsrc, which that keeps to itself: an answer that the camera has begun and does
 * not end cannot be interrupted, but by shutting the connection down. May be used on any thread.
 */
class RtspSocket
{
public:
    /** Notes connections from now on. GStreamer has been set up. */
    static void watch();

    /** Takes the connection that the calling thread made last, unless it was taken. */
    void take();

    /** Shuts the connection down, and each that is taken later. */
    void cut();

    /** Returns what has gone through the connection; empty where that is not known. */
    std::optional<SocketFlow> flow() const;

private:
    mutable std::mutex m_mutex; ///< Guards what follows.
    GstPtr<GSocket> m_socket;
    bool m_isCut = false;
};
