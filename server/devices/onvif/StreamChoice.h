#pragma once

#include "server/devices/onvif/SdpFormats.h"

#include <optional>

/** What of a camera's description is set up: its loudspeaker, and one sound that it makes. No pictures. */
struct StreamChoice
{
    bool hasLoudspeaker = false;         ///< Whether one is described.
    QString offered;                     ///< The codecs that it takes, for people: "PCMA/8000, L16/16000".
    std::optional<RtpFormat> talkFormat; ///< Of what is sent to it; empty when no codec suits.
    unsigned talkStream = 0;             ///< Number of its section in the description.
    std::optional<unsigned>
        heardStream; ///< The same of the sound; empty when there is none that can be read.

    /** Chooses from a description. @param talkCodec see CameraSettings */
    static StreamChoice of(const std::vector<SdpFormats::Sound>& sounds, const QString& talkCodec);

    /** Whether a section of the description is to be set up. */
    bool wants(unsigned stream) const;
};
