#include "onvif/OnvifAnswers.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace OnvifAnswers {

namespace {

constexpr int maxRate = 384000; // Hz

/** Adds a codec, or its rates to those that are known of it. */
void add(std::vector<CameraCodec>& codecs, const CameraCodec& codec)
{
    auto known = std::find_if(codecs.begin(), codecs.end(),
                              [&codec](const CameraCodec& other) { return other.name == codec.name; });
    if (codec.name.isEmpty() || (known == codecs.end() && codecs.size() >= maxCodecs)) {
        return;
    }
    if (known == codecs.end()) {
        codecs.push_back({codec.name});
        known = codecs.end() - 1;
    }
    for (const int rate : codec.rates) {
        if (!known->rates.contains(rate) && known->rates.size() < maxRates) {
            known->rates.insert(std::lower_bound(known->rates.begin(), known->rates.end(), rate), rate);
        }
    }
}

/** A sample rate in Hz of one in kHz, as ONVIF's lists have them, or in Hz, as some cameras do; 0 for none.
 */
int rateOf(const QString& text)
{
    constexpr double leastInHz = 1000; // what is less is kHz
    bool valid = false;
    const double number = text.toDouble(&valid);
    const double rate = number < leastInHz ? number * 1000 : number;
    return valid && rate >= 1000 && rate <= maxRate ? static_cast<int>(std::lround(rate)) : 0;
}

/** The sample rates of a codec's options. */
QList<int> ratesOf(const XmlElement& options)
{
    QList<int> rates;
    for (const char* list : {"SampleRateList", "SampleRateRange"}) { // of Media 2 and of Media
        const XmlElement* found = options.child(list);
        if (found == nullptr) {
            continue;
        }
        // One element for each, or all in one with blanks between them.
        for (const XmlElement* items : found->all("Items")) {
            const QStringList texts = items->text.simplified().split(QLatin1Char(' ')).mid(0, maxRates);
            for (const QString& text : texts) {
                if (const int rate = rateOf(text); rate > 0) {
                    rates.append(rate);
                }
            }
        }
    }
    return rates;
}

bool has(const XmlElement& profile, const char* configuration)
{
    return profile.find(configuration) != nullptr;
}

int numberOf(const XmlElement& element, const char* name)
{
    return element.textOf(name).toInt();
}

} // namespace

std::optional<QDateTime> time(const XmlElement& body)
{
    const XmlElement* utc = body.find("UTCDateTime");
    if (utc == nullptr) {
        return std::nullopt;
    }
    // A leap second is 60 in a camera's answer.
    const QDateTime time(
        QDate(numberOf(*utc, "Year"), numberOf(*utc, "Month"), numberOf(*utc, "Day")),
        QTime(numberOf(*utc, "Hour"), numberOf(*utc, "Minute"), std::min(numberOf(*utc, "Second"), 59)),
        Qt::UTC);
    return time.isValid() ? std::optional(time) : std::nullopt;
}

Services services(const XmlElement& body)
{
    Services found;
    for (const XmlElement* service : body.all("Service")) {
        const QString space = service->textOf("Namespace");
        if (space == QLatin1String("http://www.onvif.org/ver10/media/wsdl")) {
            found.media = service->textOf("XAddr");
        } else if (space == QLatin1String("http://www.onvif.org/ver20/media/wsdl")) {
            found.media2 = service->textOf("XAddr");
        }
    }
    return found;
}

Services capabilities(const XmlElement& body)
{
    const XmlElement* media = body.find("Media");
    return {media != nullptr ? media->textOf("XAddr") : QString(), QString()};
}

std::vector<CameraStream> profiles(const XmlElement& body, MediaService service)
{
    const bool two = service == MediaService::Media2;
    std::vector<CameraStream> streams;
    for (const XmlElement* profile : body.all("Profiles")) {
        if (streams.size() >= maxProfiles) {
            break;
        }
        CameraStream stream;
        stream.token = profile->token;
        stream.name = plainText(profile->child("Name") != nullptr ? profile->child("Name")->text : QString());
        const XmlElement* encoder = profile->find(two ? "AudioEncoder" : "AudioEncoderConfiguration");
        const XmlElement* video = profile->find(two ? "VideoEncoder" : "VideoEncoderConfiguration");
        stream.hasPicture = video != nullptr;
        stream.pictureCodec = video != nullptr ? codecName(video->textOf("Encoding")) : QString();
        stream.hasVoice = encoder != nullptr;
        stream.hasLoudspeaker = has(*profile, two ? "AudioOutput" : "AudioOutputConfiguration") &&
                                has(*profile, two ? "AudioDecoder" : "AudioDecoderConfiguration");
        stream.voiceCodec = encoder != nullptr ? codecName(encoder->textOf("Encoding")) : QString();
        streams.push_back(stream);
    }
    return streams;
}

QString uri(const XmlElement& body)
{
    return body.textOf("Uri");
}

std::vector<CameraCodec> decoders(const XmlElement& body, MediaService service)
{
    std::vector<CameraCodec> codecs;
    if (service == MediaService::Media2) {
        for (const XmlElement* options : body.all("Options")) {
            add(codecs, {codecName(options->textOf("Encoding")), ratesOf(*options)});
        }
        return codecs;
    }
    static constexpr std::array<std::pair<const char*, const char*>, 3> known{
        {{"G711DecOptions", "G711"}, {"G726DecOptions", "G726"}, {"AACDecOptions", "AAC"}}};
    for (const auto& [element, encoding] : known) {
        for (const XmlElement* options : body.all(element)) {
            add(codecs, {codecName(QLatin1String(encoding)), ratesOf(*options)});
        }
    }
    return codecs;
}

std::vector<CameraCodec> encoders(const XmlElement& body)
{
    std::vector<CameraCodec> codecs;
    for (const XmlElement* configuration : body.all("Configurations")) {
        const int rate = rateOf(configuration->textOf("SampleRate"));
        add(codecs,
            {codecName(configuration->textOf("Encoding")), rate > 0 ? QList<int>{rate} : QList<int>()});
    }
    return codecs;
}

int count(const XmlElement& body)
{
    return static_cast<int>(body.children.size());
}

QString codecName(const QString& encoding)
{
    const QString name = plainText(encoding, 32).toUpper();
    const bool aac = name == QLatin1String("AAC") || name == QLatin1String("MP4A-LATM");
    return aac ? QStringLiteral("MPEG4-GENERIC") : name;
}

} // namespace OnvifAnswers
