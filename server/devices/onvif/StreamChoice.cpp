#include "server/devices/onvif/StreamChoice.h"

#include "server/devices/onvif/RtpDecoder.h"
#include "server/devices/onvif/RtpEncoder.h"

#include <QStringList>

#include <algorithm>

namespace {

bool canEncode(const RtpFormat& format, const QString& codec)
{
    return (codec.isEmpty() || codec.compare(format.encoding, Qt::CaseInsensitive) == 0) &&
           RtpEncoder::existsFor(format);
}

QString namesOf(const std::vector<SdpFormats::Sound>& sounds)
{
    QStringList names;
    for (const SdpFormats::Sound& sound : sounds) {
        for (const RtpFormat& format : sound.formats) {
            if (sound.toCamera) {
                names.append(QStringLiteral("%1/%2").arg(format.encoding).arg(format.clockRate) +
                             (sound.isPlain ? QString() : QStringLiteral(" (not by RTP/AVP)")));
            }
        }
    }
    return names.join(QStringLiteral(", "));
}

} // namespace

StreamChoice StreamChoice::of(const std::vector<SdpFormats::Sound>& sounds, const QString& talkCodec)
{
    StreamChoice choice;
    choice.offered = namesOf(sounds);
    for (const SdpFormats::Sound& sound : sounds) {
        if (sound.toCamera) {
            choice.hasLoudspeaker = true;
            const auto format =
                std::find_if(sound.formats.begin(), sound.formats.end(),
                             [&](const RtpFormat& each) { return canEncode(each, talkCodec); });
            if (sound.isPlain && format != sound.formats.end() && !choice.talkFormat) {
                choice.talkFormat = *format;
                choice.talkStream = sound.stream;
            }
        } else if (!choice.heardStream && sound.isPlain &&
                   std::any_of(sound.formats.begin(), sound.formats.end(),
                               [](const RtpFormat& each) { return RtpDecoder::create(each) != nullptr; })) {
            choice.heardStream = sound.stream;
        }
    }
    return choice;
}

bool StreamChoice::wants(unsigned stream) const
{
    return talkFormat && (talkStream == stream || heardStream == stream);
}
