#include "server/devices/onvif/RtpEncoder.h"

#include "audio/AdtsHeader.h"
#include "audio/AvTalkEncoder.h"
#include "audio/G711.h"
#include "audio/PcmConverter.h"
#include "src/decoders/CodecTable.h"
#include "src/decoders/G726.h"
#include "src/vocabulary/StreamType.h"

extern "C" {
#include <libavcodec/codec_id.h>
}

#include <QtEndian>

#include <algorithm>

namespace {

constexpr int msPerSecond = 1000;
constexpr std::int64_t microsecondsPerSecond = 1000000;
constexpr std::int64_t patience = RtpEncoder::spokenRate; // samples that sound may be ahead of the clock
constexpr int maxChannels = 2;
constexpr int minRate = 8000;
constexpr int maxRate = 48000;
constexpr int lowComplexity = 2;
constexpr int aacFrame = 1024;    // samples
constexpr int minSizeBits = 10;   // a frame has up to 768 bytes (ISO/IEC 14496-3, clause 4.5.3.2)
constexpr int maxLengthBits = 16; // of a field of an AU header

/** Codecs with as many samples as mu-law: each payload is made of the mu-law of one packet time. */
class PacketEncoder : public RtpEncoder
{
public:
    explicit PacketEncoder(int packetTime) : RtpEncoder(spokenRate, packetTime) {}

protected:
    virtual QByteArray encodePacket(const QByteArray& muLaw) = 0;

    void restart() override { m_pending.clear(); }

    void encodeSound(const QByteArray& muLaw, std::vector<RtpPayload>& out) override
    {
        m_pending += muLaw;
        const int samples = packetTime() * spokenRate / msPerSecond;
        int used = 0;
        for (; m_pending.size() - used >= samples; used += samples) {
            append(encodePacket(m_pending.mid(used, samples)), samples, takeMarker(), out);
        }
        m_pending.remove(0, used);
    }

private:
    QByteArray m_pending; ///< Less than a packet.
};

class MuLawEncoder : public PacketEncoder
{
    using PacketEncoder::PacketEncoder;
    QByteArray encodePacket(const QByteArray& muLaw) override { return muLaw; }
};

class ALawEncoder : public PacketEncoder
{
    using PacketEncoder::PacketEncoder;
    QByteArray encodePacket(const QByteArray& muLaw) override { return G711::muLawToALaw(muLaw); }
};

/** G.726 by the sample, packed as RFC 3551, clause 4.5.4, or AAL2 has it. */
class G726Encoder : public PacketEncoder
{
public:
    G726Encoder(const G726Format& format, int packetTime)
        : PacketEncoder(packetTime), m_highestFirst(format.highestFirst)
    {
        G726_Create(&m_state, format.bitRate, G726Linear, G726PackingNone);
    }

private:
    QByteArray encodePacket(const QByteArray& muLaw) override
    {
        QByteArray packed;
        packed.reserve(muLaw.size() * m_state.codeBits / 8);
        unsigned bits = 0;
        int count = 0;
        for (const char byte : muLaw) {
            const auto code = static_cast<unsigned>(m_state.encode(&m_state, G711::expandMuLaw(byte)));
            const auto width = static_cast<unsigned>(m_state.codeBits);
            bits = m_highestFirst ? bits << width | code : bits | code << static_cast<unsigned>(count);
            count += m_state.codeBits;
            while (count >= 8) { // a packet has whole bytes: 8 samples, whatever the rate
                count -= 8;
                packed.append(
                    static_cast<char>(m_highestFirst ? bits >> static_cast<unsigned>(count) : bits));
                bits = m_highestFirst ? bits & ((1U << static_cast<unsigned>(count)) - 1U) : bits >> 8U;
            }
        }
        return packed;
    }

    G726State m_state{};
    bool m_highestFirst;
};

/** Codecs at a rate of their own. */
class ResamplingEncoder : public RtpEncoder
{
public:
    ResamplingEncoder(int rate, int packetTime, int frameSamples)
        : RtpEncoder(rate, packetTime), m_converter(SampleFormat::S16, spokenRate, 1, rate),
          m_frameSamples(frameSamples)
    {
    }

    bool isGood() const { return m_converter.valid(); }

protected:
    virtual void encodeFrame(const std::int16_t* samples, std::vector<RtpPayload>& out) = 0;

    void encodeSound(const QByteArray& muLaw, std::vector<RtpPayload>& out) override
    {
        const std::vector<std::int16_t> samples = G711::decodeMuLaw(muLaw);
        m_converter.convert(samples.data(), samples.size(), m_pending);
        std::size_t used = 0;
        const auto frame = static_cast<std::size_t>(m_frameSamples);
        for (; m_pending.size() - used >= frame; used += frame) {
            encodeFrame(m_pending.data() + used, out);
        }
        m_pending.erase(m_pending.begin(), m_pending.begin() + static_cast<std::ptrdiff_t>(used));
    }

    void restart() override { m_pending.clear(); }
    int frameSamples() const { return m_frameSamples; }

private:
    PcmConverter m_converter;
    int m_frameSamples;
    std::vector<std::int16_t> m_pending;
};

/** 16-bit samples in network order (RFC 3551, clause 4.5.11). */
class L16Encoder : public ResamplingEncoder
{
public:
    L16Encoder(const RtpFormat& format, int packetTime)
        : ResamplingEncoder(format.clockRate, packetTime, format.clockRate * packetTime / msPerSecond),
          m_channels(format.channels)
    {
    }

private:
    void encodeFrame(const std::int16_t* samples, std::vector<RtpPayload>& out) override
    {
        QByteArray bytes;
        bytes.reserve(frameSamples() * m_channels * 2);
        for (int i = 0; i < frameSamples(); ++i) {
            const qint16 sample = qToBigEndian<qint16>(samples[i]);
            for (int channel = 0; channel < m_channels; ++channel) {
                bytes.append(reinterpret_cast<const char*>(&sample), sizeof(sample));
            }
        }
        append(bytes, frameSamples(), takeMarker(), out);
    }

    int m_channels;
};

/** AAC-LC, a frame in each payload (RFC 3640, clause 3.3.6). */
class AacEncoder : public ResamplingEncoder
{
public:
    AacEncoder(const RtpFormat& format, int packetTime)
        : ResamplingEncoder(format.clockRate, packetTime, aacFrame), m_format(format),
          m_encoder(AV_CODEC_ID_AAC, talkFormat(format.clockRate))
    {
    }

    bool isGood() const { return ResamplingEncoder::isGood() && m_encoder.valid(); }

private:
    static TalkFormat talkFormat(int rate)
    {
        TalkFormat format(*Codec::byType(StreamType::Aac));
        format.sampleRate = rate;
        return format;
    }

    void encodeFrame(const std::int16_t* samples, std::vector<RtpPayload>& out) override
    {
        const QByteArray frame = m_encoder.encode(samples).mid(AdtsHeader::size);
        const int limit = 1 << m_format.sizeLength;
        // An empty frame is the encoder's delay: its time passes all the same.
        const bool fits = !frame.isEmpty() && frame.size() < limit;
        append(fits ? auHeader(frame.size()) + frame : QByteArray(), aacFrame, true, out);
    }

    /** The length of the AU headers in bits, and one header: size and index 0, filled up to whole bytes. */
    QByteArray auHeader(int size) const
    {
        const int bits = m_format.sizeLength + m_format.indexLength;
        const int bytes = (bits + 7) / 8;
        const quint64 value = static_cast<quint64>(size) << (bytes * 8 - m_format.sizeLength);
        QByteArray header;
        header.append(static_cast<char>(bits >> 8)).append(static_cast<char>(bits));
        for (int i = bytes - 1; i >= 0; --i) {
            header.append(static_cast<char>(value >> (i * 8)));
        }
        return header;
    }

    RtpFormat m_format;
    AvTalkEncoder m_encoder;
};

bool isAac(const RtpFormat& format)
{
    const auto config = AacConfig::parse(format.config);
    return format.encoding == QLatin1String("MPEG4-GENERIC") && format.sizeLength >= minSizeBits &&
           format.sizeLength <= maxLengthBits && format.indexLength >= 0 &&
           format.indexLength <= maxLengthBits && config && config->objectType == lowComplexity &&
           config->sampleRate == format.clockRate && config->channels == 1;
}

bool isL16(const RtpFormat& format)
{
    return format.encoding == QLatin1String("L16") && format.clockRate >= minRate &&
           format.clockRate <= maxRate && format.channels >= 1 && format.channels <= maxChannels;
}

bool isNarrowBand(const RtpFormat& format)
{
    return format.clockRate == RtpEncoder::spokenRate && format.channels == 1;
}

} // namespace

bool RtpEncoder::existsFor(const RtpFormat& format)
{
    if (isAac(format) || isL16(format)) {
        return true;
    }
    return isNarrowBand(format) &&
           (format.encoding == QLatin1String("PCMU") || format.encoding == QLatin1String("PCMA") ||
            G726Format::of(format.encoding));
}

std::unique_ptr<RtpEncoder> RtpEncoder::create(const RtpFormat& format, int packetTime)
{
    if (!existsFor(format)) {
        return nullptr;
    }
    if (isAac(format)) {
        auto encoder = std::make_unique<AacEncoder>(format, packetTime);
        return encoder->isGood() ? std::move(encoder) : nullptr;
    }
    if (isL16(format)) {
        auto encoder = std::make_unique<L16Encoder>(format, packetTime);
        return encoder->isGood() ? std::move(encoder) : nullptr;
    }
    if (const auto g726 = G726Format::of(format.encoding)) {
        return std::make_unique<G726Encoder>(*g726, packetTime);
    }
    if (format.encoding == QLatin1String("PCMA")) {
        return std::make_unique<ALawEncoder>(packetTime);
    }
    return std::make_unique<MuLawEncoder>(packetTime);
}

RtpEncoder::RtpEncoder(int clockRate, int packetTime) : m_clockRate(clockRate), m_packetTime(packetTime) {}

void RtpEncoder::encode(std::uint32_t position, std::int64_t time, const QByteArray& muLaw,
                        std::vector<RtpPayload>& out)
{
    const std::int64_t elapsed = (time - m_lastTime) * spokenRate / microsecondsPerSecond;
    std::int64_t gap = m_started ? static_cast<std::int32_t>(position - m_expected) : 0;
    if (gap < 0 || gap > elapsed + patience) {
        gap = std::max<std::int64_t>(elapsed, 1);
    }
    if (gap != 0) {
        restart();
        m_said += static_cast<std::uint64_t>(gap);
        m_pauseAt = m_said;
        m_sent = 0;
        m_afterPause = true;
    }
    m_started = true;
    m_lastTime = time;
    m_expected = position + static_cast<std::uint32_t>(muLaw.size());
    m_said += static_cast<std::uint64_t>(muLaw.size());
    encodeSound(muLaw, out);
}

void RtpEncoder::append(const QByteArray& bytes, int samples, bool marker, std::vector<RtpPayload>& out)
{
    if (!bytes.isEmpty()) {
        const std::uint64_t start = m_pauseAt * static_cast<std::uint64_t>(m_clockRate) / spokenRate;
        out.push_back(
            {bytes, static_cast<std::uint32_t>(start + m_sent), marker, samples * msPerSecond / m_clockRate});
    }
    m_sent += static_cast<std::uint64_t>(samples);
}

bool RtpEncoder::takeMarker()
{
    return std::exchange(m_afterPause, false);
}
