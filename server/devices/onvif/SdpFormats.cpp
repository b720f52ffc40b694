#include "server/devices/onvif/SdpFormats.h"

#include "server/devices/onvif/GstPtr.h"

#include <QRegularExpression>
#include <QStringList>

#include <cstring>

namespace {

constexpr unsigned maxSections = 64;
constexpr int maxParameterSets = 16;

QString textOf(const GstStructure* caps, const char* name)
{
    return QString::fromLatin1(gst_structure_get_string(caps, name));
}

int numberOf(const GstStructure* caps, const char* name, int fallback = 0)
{
    int number = fallback;
    if (gst_structure_get_int(caps, name, &number) == FALSE) {
        const QString text = textOf(caps, name); // parameters of a format are texts
        return text.isEmpty() ? fallback : text.toInt();
    }
    return number;
}

/** Whether a camera's text can be the name of an encoding, which people may get to see (RFC 4566, "token").
 */
bool isName(const QString& text)
{
    static const QRegularExpression name(QStringLiteral("\\A[-!#$%&'*+.^_`{|}~A-Z0-9]+\\z"));
    return text.size() <= SdpFormats::maxName && name.match(text).hasMatch();
}

bool isOf(const GstSDPMedia* media, const char* wanted)
{
    const char* kind = gst_sdp_media_get_media(media);
    return kind != nullptr && std::strcmp(kind, wanted) == 0;
}

/** Payload types that need no rtpmap (RFC 3551, clause 6). */
RtpFormat staticFormat(int payloadType)
{
    constexpr int g721 = 2;
    constexpr int pcma = 8;
    constexpr int l16Stereo = 10;
    constexpr int l16Mono = 11;
    switch (payloadType) {
    case 0:
        return {QStringLiteral("PCMU"), payloadType, 8000};
    case g721:
        return {QStringLiteral("G726-32"), payloadType, 8000};
    case pcma:
        return {QStringLiteral("PCMA"), payloadType, 8000};
    case l16Stereo:
        return {QStringLiteral("L16"), payloadType, 44100, 2};
    case l16Mono:
        return {QStringLiteral("L16"), payloadType, 44100};
    default:
        return {};
    }
}

} // namespace

RtpFormat SdpFormats::formatOf(const GstStructure* caps)
{
    RtpFormat format;
    format.payloadType = numberOf(caps, "payload");
    format.encoding = textOf(caps, "encoding-name").toUpper();
    if (format.encoding.isEmpty()) {
        return staticFormat(format.payloadType);
    }
    if (!isName(format.encoding)) {
        return {};
    }
    format.clockRate = numberOf(caps, "clock-rate");
    format.channels = numberOf(caps, "encoding-params", 1);
    format.sizeLength = numberOf(caps, "sizelength");
    format.indexLength = numberOf(caps, "indexlength");
    format.indexDeltaLength = numberOf(caps, "indexdeltalength");
    format.config = QByteArray::fromHex(textOf(caps, "config").toLatin1());
    return format;
}

std::vector<SdpFormats::Sound> SdpFormats::soundsOf(const GstSDPMessage* description)
{
    std::vector<Sound> sounds;
    const unsigned sections = std::min(gst_sdp_message_medias_len(description), maxSections);
    for (unsigned section = 0; section < sections && sounds.size() < maxSounds; ++section) {
        const GstSDPMedia* media = gst_sdp_message_get_media(description, section);
        if (!isOf(media, "audio")) {
            continue;
        }
        Sound sound;
        sound.stream = section;
        const char* transport = gst_sdp_media_get_proto(media);
        sound.isPlain = g_strcmp0(transport, "RTP/AVP") == 0 || g_strcmp0(transport, "RTP/AVPF") == 0;
        sound.toCamera = gst_sdp_media_get_attribute_val(media, "sendonly") != nullptr;
        const unsigned formats = std::min(gst_sdp_media_formats_len(media), unsigned{maxFormats});
        for (unsigned i = 0; i < formats; ++i) {
            const int payloadType = QByteArray(gst_sdp_media_get_format(media, i)).toInt();
            const GstPtr<GstCaps> caps(gst_sdp_media_get_caps_from_media(media, payloadType));
            const RtpFormat format = caps && gst_caps_get_size(caps.get()) > 0
                                         ? formatOf(gst_caps_get_structure(caps.get(), 0))
                                         : staticFormat(payloadType);
            if (!format.encoding.isEmpty()) {
                sound.formats.push_back(format);
            }
        }
        sounds.push_back(sound);
    }
    return sounds;
}

SdpFormats::Video SdpFormats::videoOf(const GstSDPMessage* description)
{
    Video video;
    QStringList offered;
    const unsigned sections = std::min(gst_sdp_message_medias_len(description), maxSections);
    for (unsigned section = 0; section < sections && !video.stream; ++section) {
        const GstSDPMedia* media = gst_sdp_message_get_media(description, section);
        const char* first =
            gst_sdp_media_formats_len(media) > 0 ? gst_sdp_media_get_format(media, 0) : nullptr;
        if (!isOf(media, "video") || first == nullptr) {
            continue;
        }
        // The first format alone: rtspsrc sets up no other one.
        const GstPtr<GstCaps> caps(gst_sdp_media_get_caps_from_media(media, QByteArray(first).toInt()));
        if (!caps || gst_caps_get_size(caps.get()) == 0) {
            continue;
        }
        const GstStructure* format = gst_caps_get_structure(caps.get(), 0);
        const QString encoding = textOf(format, "encoding-name").toUpper();
        if (encoding == QLatin1String("H264")) {
            video.stream = section;
            const QStringList sets = textOf(format, "sprop-parameter-sets").split(',', Qt::SkipEmptyParts);
            for (const QString& set : sets.mid(0, maxParameterSets)) {
                video.parameterSets.append(QByteArray::fromBase64(set.toLatin1()));
            }
        } else if (isName(encoding) && offered.size() < static_cast<int>(maxSounds)) {
            offered.append(encoding);
        }
    }
    video.offered = offered.join(QStringLiteral(", "));
    return video;
}
