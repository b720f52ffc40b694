#pragma once

#include "protocol/CameraSettings.h"
#include "server/devices/onvif/StreamChoice.h"

/** Why a line does not open: what the client gets. */
struct LineRefusal
{
    QString returnCode; ///< see ReturnCode
    QString reason;     ///< For people.

    /**
     * Reads an error message of rtspsrc.
     *
     * @param choice   null when the camera had not described itself
     * @param settings of the camera
     * @return empty when the message does not say enough: the camera may be without a loudspeaker
     */
    static std::optional<LineRefusal> of(GstMessage* error, const StreamChoice* choice,
                                         const CameraSettings& settings);

    /**
     * The same for its video.
     *
     * @param video null when the camera had not described itself
     */
    static LineRefusal ofVideo(GstMessage* error, const SdpFormats::Video* video);

    /** There is no H.264. @param offered see SdpFormats::Video */
    static LineRefusal noVideo(const QString& offered);

    /** Whether an error message of rtspsrc says that the camera does not take the method of a request. */
    static bool isOfMethod(GstMessage* error);

    /** Returns why a camera does not describe itself at all. @param hasTls whether the line is one with TLS
     */
    static LineRefusal undescribed(GstMessage* error, bool hasTls);

    /** Returns what is left when nothing better is known than an error message of rtspsrc. */
    static LineRefusal other(GstMessage* error);

    /** The camera takes no method that opens a talk. */
    static LineRefusal noMethod();

    /** The camera's certificate is signed by nobody whom this machine trusts. */
    static LineRefusal untrusted();

    /** The camera wants to be asked at another address. */
    static LineRefusal elsewhere();

    /** The camera wants to be asked at one of its addresses after the other. */
    static LineRefusal endless();

    /** The camera wants the talk to be sent to another host. */
    static LineRefusal streamElsewhere();

    /** The camera sends more than answers and sound. */
    static LineRefusal flood();

    /** The server has no room for the line. */
    static LineRefusal noRoom();

    /** The camera has no loudspeaker. */
    static LineRefusal noLoudspeaker();

    /** There is no codec for its loudspeaker. @param talkCodec see CameraSettings */
    static LineRefusal noCodec(const QString& offered, const QString& talkCodec);
};
