#include "server/devices/onvif/RtpDecoder.h"

#include "audio/AdtsHeader.h"
#include "audio/G711.h"
#include "audio/PcmConverter.h"
#include "server/devices/onvif/BitReader.h"
#include "src/decoders/G726.h"
#include "src/vocabulary/StreamType.h"

#include <QtEndian>

namespace {

constexpr int muLawRate = 8000; // Hz
constexpr int maxChannels = 8;
constexpr int minRate = 1000;
constexpr int maxRate = 192000;
constexpr int maxPayload = 16000; // bytes; longer ones are no live sound
constexpr int aacFrame = 1024;    // samples
constexpr int maxFrames = 64;     // in one payload

/** G.711, whose bytes go on as they are. */
class G711Voice : public RtpDecoder
{
public:
    G711Voice(const RtpFormat& format, std::uint32_t streamType)
        : RtpDecoder(format.clockRate, format.clockRate), m_streamType(streamType)
    {
    }

private:
    void decodePayload(const RtpVoice& voice, std::vector<VoicePacket>& out) override
    {
        out.push_back({voice.payload, m_streamType, packetRate(), 1, positionOf(), voice.time});
    }

    std::uint32_t m_streamType;
};

class G726Voice : public RtpDecoder
{
public:
    G726Voice(const RtpFormat& format, const G726Format& g726) : RtpDecoder(format.clockRate, muLawRate)
    {
        G726_Create(&m_state, g726.bitRate, G726MuLaw,
                    g726.highestFirst ? G726PackingLeft : G726PackingRight);
    }

private:
    void decodePayload(const RtpVoice& voice, std::vector<VoicePacket>& out) override
    {
        m_state.bitCount = 0; // each payload has whole codes
        m_state.bitBuffer = 0;
        QByteArray muLaw(voice.payload.size() * 8 / m_state.codeBits, '\0');
        const std::int32_t count = G726_DecodeBytes(
            &m_state, muLaw.data(), reinterpret_cast<const std::uint8_t*>(voice.payload.constData()),
            voice.payload.size());
        muLaw.truncate(count);
        if (!muLaw.isEmpty()) {
            out.push_back({muLaw, StreamType::G711MuLaw, muLawRate, 1, positionOf(), voice.time});
        }
    }

    G726State m_state{};
};

/** 16-bit samples in network order; the first of several channels. */
class L16Voice : public RtpDecoder
{
public:
    explicit L16Voice(const RtpFormat& format)
        : RtpDecoder(format.clockRate, muLawRate), m_channels(format.channels),
          m_converter(SampleFormat::S16, format.clockRate, 1, muLawRate)
    {
    }

    bool isGood() const { return m_converter.valid(); }

private:
    void decodePayload(const RtpVoice& voice, std::vector<VoicePacket>& out) override
    {
        std::vector<std::int16_t> samples;
        const int step = m_channels * 2;
        for (int at = 0; at + step <= voice.payload.size(); at += step) {
            samples.push_back(qFromBigEndian<qint16>(voice.payload.constData() + at));
        }
        std::vector<std::int16_t> converted;
        m_converter.convert(samples.data(), samples.size(), converted);
        if (!converted.empty()) {
            out.push_back({G711::encodeMuLaw(converted), StreamType::G711MuLaw, muLawRate, 1, positionOf(),
                           voice.time});
        }
    }

    int m_channels;
    PcmConverter m_converter;
};

/** AAC frames out of RFC 3640's packets, each with an ADTS header. */
class AacVoice : public RtpDecoder
{
public:
    AacVoice(const RtpFormat& format, const AacConfig& config)
        : RtpDecoder(format.clockRate, config.soundRate), m_format(format), m_config(config),
          m_frameUnits(std::int64_t{aacFrame} * format.clockRate / config.sampleRate)
    {
    }

private:
    void decodePayload(const RtpVoice& voice, std::vector<VoicePacket>& out) override
    {
        const QByteArray& payload = voice.payload;
        BitReader bits(payload.constData(), payload.size());
        const auto headerBits = static_cast<int>(bits.read(16));
        int at = 2 + (headerBits + 7) / 8;
        if (at > payload.size()) {
            return;
        }
        int left = headerBits;
        for (int frame = 0; frame < maxFrames; ++frame) {
            const int index = frame == 0 ? m_format.indexLength : m_format.indexDeltaLength;
            left -= m_format.sizeLength + index;
            if (left < 0) {
                return;
            }
            const auto size = static_cast<int>(bits.read(m_format.sizeLength));
            bits.read(index);
            if (size > payload.size() - at) {
                if (frame == 0) {
                    gather(voice, payload.mid(at), size, out);
                }
                return;
            }
            m_fragments.clear();
            append(payload.mid(at, size), frame, voice, out);
            at += size;
        }
    }

    /** Joins the parts of a frame that did not fit into one packet: each has the size of the whole. */
    void gather(const RtpVoice& voice, const QByteArray& part, int size, std::vector<VoicePacket>& out)
    {
        if (m_fragmentTime != voice.timestamp || m_fragments.isEmpty()) {
            m_fragments.clear();
            m_fragmentTime = voice.timestamp;
        }
        m_fragments += part;
        if (m_fragments.size() >= size) {
            if (m_fragments.size() == size) {
                append(m_fragments, 0, voice, out);
            }
            m_fragments.clear();
        }
    }

    void append(const QByteArray& frame, int number, const RtpVoice& voice, std::vector<VoicePacket>& out)
    {
        if (frame.isEmpty() || frame.size() > AdtsHeader::maxFrameSize - AdtsHeader::size) {
            return;
        }
        const QByteArray header =
            AdtsHeader::make(m_config.objectType, AdtsHeader::indexOf(m_config.sampleRate).value_or(0),
                             m_config.channels, frame.size());
        out.push_back({header + frame, StreamType::Aac, packetRate(), 1, positionOf(number * m_frameUnits),
                       voice.time, m_config.soundChannels});
    }

    RtpFormat m_format;
    AacConfig m_config;
    std::int64_t m_frameUnits; ///< Of the clock rate, in a frame.
    QByteArray m_fragments;    ///< Of one frame; bounded by its size, 16 bits at the most.
    std::uint32_t m_fragmentTime = 0;
};

constexpr int maxLengthBits = 16;

bool isLength(int bits)
{
    return bits >= 0 && bits <= maxLengthBits;
}

} // namespace

std::unique_ptr<RtpDecoder> RtpDecoder::create(const RtpFormat& format)
{
    if (format.clockRate < minRate || format.clockRate > maxRate) {
        return nullptr;
    }
    const bool mono = format.channels == 1;
    if (format.encoding == QLatin1String("PCMU") && mono) {
        return std::make_unique<G711Voice>(format, StreamType::G711MuLaw);
    }
    if (format.encoding == QLatin1String("PCMA") && mono) {
        return std::make_unique<G711Voice>(format, StreamType::G711ALaw);
    }
    const auto g726 = G726Format::of(format.encoding);
    if (g726 && mono && format.clockRate == muLawRate) {
        return std::make_unique<G726Voice>(format, *g726);
    }
    if (format.encoding == QLatin1String("L16") && format.channels >= 1 && format.channels <= maxChannels) {
        auto voice = std::make_unique<L16Voice>(format);
        return voice->isGood() ? std::move(voice) : nullptr;
    }
    const auto config = AacConfig::parse(format.config);
    if (format.encoding == QLatin1String("MPEG4-GENERIC") && config && isLength(format.sizeLength) &&
        format.sizeLength > 0 && isLength(format.indexLength) && isLength(format.indexDeltaLength)) {
        return std::make_unique<AacVoice>(format, *config);
    }
    return nullptr;
}

void RtpDecoder::decode(const RtpVoice& voice, std::vector<VoicePacket>& out)
{
    if (voice.payload.isEmpty() || voice.payload.size() > maxPayload) {
        return;
    }
    m_elapsed += m_started ? static_cast<std::int32_t>(voice.timestamp - m_last) : 0;
    m_started = true;
    m_last = voice.timestamp;
    decodePayload(voice, out);
}

std::uint32_t RtpDecoder::positionOf(std::int64_t behind) const
{
    // Timestamps before the first one come from disordered packets: positions wrap for them, too.
    return static_cast<std::uint32_t>((m_elapsed + behind) * m_packetRate / m_clockRate);
}
