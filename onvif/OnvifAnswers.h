#pragma once

#include "onvif/CameraAbilities.h"
#include "onvif/XmlElement.h"

#include <QDateTime>

#include <optional>

/** The two services of ONVIF that know profiles and streams. */
enum class MediaService
{
    Media,  ///< The first one (ONVIF Media Service).
    Media2, ///< Its successor (ONVIF Media 2 Service), which every camera of Profile T has.
};

/** What is in the answers of a camera, body by body. Whatever else is in them is left out. */
namespace OnvifAnswers {

inline constexpr int maxProfiles = 64; ///< That are read of a camera.
inline constexpr int maxCodecs = 32;   ///< That are read of an answer.
inline constexpr int maxRates = 32;    ///< Of a codec.

/** The addresses of a camera's services, as it reports them; empty for those it does not have. */
struct Services
{
    QString media;  ///< Of MediaService::Media.
    QString media2; ///< Of MediaService::Media2.
};

/** Reads the answer to GetSystemDateAndTime: the time in UTC; empty when there is none in it. */
std::optional<QDateTime> time(const XmlElement& body);

/** Reads GetServices. */
Services services(const XmlElement& body);

/** Reads GetCapabilities. */
Services capabilities(const XmlElement& body);

/** Reads GetProfiles: the streams without addresses. */
std::vector<CameraStream> profiles(const XmlElement& body, MediaService service);

/** Reads GetStreamUri or GetSnapshotUri: the address, as the camera reports it. */
QString uri(const XmlElement& body);

/** Reads GetAudioDecoderConfigurationOptions: the codecs that the loudspeaker decodes. */
std::vector<CameraCodec> decoders(const XmlElement& body, MediaService service);

/** Reads GetAudioEncoderConfigurations: the codecs that the microphone speaks in. */
std::vector<CameraCodec> encoders(const XmlElement& body);

/** Returns the number of sources or outputs in an answer. */
int count(const XmlElement& body);

/** Returns the RTP name of a codec as a camera names it. */
QString codecName(const QString& encoding);

} // namespace OnvifAnswers
