#include "server/devices/onvif/RtpFormat.h"

#include "audio/AdtsHeader.h"
#include "server/devices/onvif/BitReader.h"

namespace {

constexpr int explicitRate = 15;
constexpr int maxAdtsObjectType = 4;
constexpr int maxAdtsChannels = 7;
constexpr int objectTypeBits = 5;
constexpr int rateIndexBits = 4;
constexpr int rateBits = 24;
constexpr int channelBits = 4;
constexpr int spectralBandReplication = 5;
constexpr int parametricStereo = 29;

/** Reads a sample rate, given by its index or in Hz; 0 for none. */
int readRate(BitReader& bits)
{
    const auto index = static_cast<int>(bits.read(rateIndexBits));
    return index == explicitRate ? static_cast<int>(bits.read(rateBits)) : AdtsHeader::rateOf(index);
}

} // namespace

std::optional<AacConfig> AacConfig::parse(const QByteArray& config)
{
    BitReader bits(config.constData(), config.size());
    AacConfig result;
    result.objectType = static_cast<int>(bits.read(objectTypeBits));
    result.sampleRate = readRate(bits);
    result.channels = static_cast<int>(bits.read(channelBits));
    result.soundRate = result.sampleRate;
    result.soundChannels = result.channels == maxAdtsChannels ? maxAdtsChannels + 1 : result.channels;
    if (result.objectType == parametricStereo && result.channels == 1) {
        result.soundChannels = 2;
    }
    if (result.objectType == spectralBandReplication || result.objectType == parametricStereo) {
        readRate(bits); // ADTS headers do not say it: decoders double the core's
        result.soundRate *= 2;
        result.objectType = static_cast<int>(bits.read(objectTypeBits));
    }
    const bool fitsAdts = result.objectType >= 1 && result.objectType <= maxAdtsObjectType &&
                          AdtsHeader::indexOf(result.sampleRate) && result.channels >= 1 &&
                          result.channels <= maxAdtsChannels;
    return bits.isGood() && fitsAdts ? std::optional(result) : std::nullopt;
}

std::optional<G726Format> G726Format::of(const QString& encoding)
{
    const QString aal2 = QStringLiteral("AAL2-");
    G726Format format;
    format.highestFirst = encoding.startsWith(aal2);
    const QString name = format.highestFirst ? encoding.mid(aal2.size()) : encoding;
    constexpr int kilo = 1000;
    for (const int rate : {16, 24, 32, 40}) {
        if (name == QStringLiteral("G726-%1").arg(rate)) {
            format.bitRate = rate * kilo;
            return format;
        }
    }
    return std::nullopt;
}
