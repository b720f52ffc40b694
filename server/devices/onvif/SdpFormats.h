#pragma once

#include "server/devices/onvif/RtpFormat.h"

#include <gst/gst.h>
#include <gst/sdp/gstsdpmessage.h>

#include <QList>

#include <optional>
#include <vector>

/** What a session description says of sound. Any thread. */
namespace SdpFormats {

constexpr std::size_t maxSounds = 16;  ///< That are read of a description.
constexpr std::size_t maxFormats = 32; ///< The same of a sound.
constexpr int maxName = 32;            ///< Characters of an encoding's name; longer ones are left out.

/** One sound of a camera. */
struct Sound
{
    unsigned stream = 0;   ///< Number of its section in the description, as rtspsrc counts.
    bool toCamera = false; ///< Its loudspeaker; directions are the client's, so the section is "sendonly".
    bool isPlain = true;   ///< Is sent by RTP/AVP or RTP/AVPF, not encrypted.
    std::vector<RtpFormat> formats; ///< In the camera's order of preference.
};

/** The video of a camera. */
struct Video
{
    std::optional<unsigned> stream;  ///< Number of its section; empty when none has H.264.
    QList<QByteArray> parameterSets; ///< That the description has, NAL units (RFC 6184, clause 8.1).
    QString offered;                 ///< The codecs of all videos, for people: "H265"; empty for none.
};

/** Reads the description of a stream; without an encoding when it has none. */
RtpFormat formatOf(const GstStructure* caps);

/** Returns the sounds of a description. */
std::vector<Sound> soundsOf(const GstSDPMessage* description);

/** Returns the first video of a description with H.264. */
Video videoOf(const GstSDPMessage* description);

} // namespace SdpFormats
