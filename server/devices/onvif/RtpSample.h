#pragma once

#include "server/devices/onvif/RtpDecoder.h"
#include "server/devices/onvif/RtpEncoder.h"

#include <gst/gst.h>

#include <optional>

/** RTP packets as GStreamer has them. */
namespace RtpSample {

/** Reads a packet of a camera; empty when it is none. Its time is now. */
std::optional<RtpVoice> read(GstSample* sample);

/** What the header of a packet to a camera has besides what the payload says. */
struct Header
{
    int payloadType = 0;          ///< 0 to 127, as the camera's description maps it.
    std::uint16_t sequence = 0;   ///< One more than that of the last packet.
    std::uint32_t timeOffset = 0; ///< Of the timestamp 0 of payloads.
    std::uint32_t ssrc = 0;       ///< Synchronization source (RFC 3550, clause 5.1).
};

/** Makes a packet. @return a reference, which the caller owns; null without memory */
GstSample* make(const RtpPayload& payload, const Header& header);

} // namespace RtpSample
