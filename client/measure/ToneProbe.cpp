#include "client/measure/ToneProbe.h"

#include "audio/PacketHeader.h"
#include "audio/PacketStream.h"
#include "audio/SteadyClock.h"
#include "audio/TalkEncoder.h"
#include "protocol/Words.h"
#include "src/decoders/CodecTable.h"
#include "src/vocabulary/StreamType.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double pi = 3.14159265358979323846;
constexpr double lowest = 400;                                            // Hz
constexpr double highest = 2400;                                          // Hz
constexpr double amplitude = 8000;                                        // -12 dBFS
constexpr std::size_t maxHeard = std::size_t{10} * ToneProbe::sampleRate; // samples
constexpr std::uint32_t highestRate = 96000;                              // Hz
constexpr double microsecondsPerSecond = 1e6;

double energyOf(const std::int16_t* samples, std::size_t count)
{
    double sum = 0;
    for (std::size_t i = 0; i < count; ++i) {
        sum += static_cast<double>(samples[i]) * samples[i];
    }
    return sum;
}

} // namespace

ToneProbe::ToneProbe() : m_tone(std::size_t{packets} * packetSamples)
{
    const double length = static_cast<double>(m_tone.size()) / sampleRate; // seconds
    for (std::size_t i = 0; i < m_tone.size(); ++i) {
        const double t = static_cast<double>(i) / sampleRate;
        m_tone[i] = static_cast<std::int16_t>(
            amplitude * std::sin(2 * pi * (lowest + (highest - lowest) * t / (2 * length)) * t));
    }
}

ToneProbe::~ToneProbe() = default;

QByteArray ToneProbe::packet(int number) const
{
    const Codec& codec = *Codec::byType(StreamType::G711MuLaw);
    const auto encoder = TalkEncoder::create(codec);
    if (!encoder) {
        return QByteArray();
    }
    PacketHeader header;
    header.channels = 1;
    header.streamType = codec.streamType;
    header.sampleRate = sampleRate;
    header.position = static_cast<std::uint32_t>(number) * packetSamples;
    header.captureTime = static_cast<std::uint64_t>(SteadyClock::now() * microsecondsPerSecond);
    const auto bytes = header.toBytes();
    return QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size())) +
           encoder->encode(m_tone.data() + std::size_t{header.position});
}

void ToneProbe::hear(const QVariantMap& fields)
{
    const QByteArray data = QByteArray::fromBase64(fields.value(Words::AudioData).toString().toLatin1());
    const std::uint32_t type = fields.value(Words::StreamType).toUInt();
    const std::uint32_t rate = fields.value(Words::AudioSamplingFreq).toUInt();
    const qint64 offset = fields.value(Words::Offset).toUInt();
    const qint64 size = fields.value(Words::BitstreamSize).toUInt();
    if (rate < sampleRate || rate > highestRate || offset + size > data.size() ||
        m_heard.size() >= maxHeard) {
        return;
    }
    if (!m_stream) {
        StreamParameters parameters;
        parameters.streamType = m_streamType = type;
        parameters.sampleRate = m_rate = rate;
        parameters.channels = 1;
        parameters.frameNumber = fields.value(Words::FrameNumber).toUInt();
        m_stream = std::make_unique<PacketStream>(parameters);
    }
    if (type != m_streamType || rate != m_rate) {
        return;
    }
    const auto samples = m_stream->decode(data.mid(static_cast<int>(offset), static_cast<int>(size)));
    if (!samples || samples->empty()) {
        return;
    }
    m_arrivals.push_back({m_heard.size(), SteadyClock::now()});
    const double step = static_cast<double>(rate) / sampleRate;
    const auto end = static_cast<double>(samples->size());
    while (m_place < end) {
        m_heard.push_back((*samples)[static_cast<std::size_t>(m_place)]);
        m_place += step;
    }
    m_place -= end;
}

std::optional<ToneProbe::Echo> ToneProbe::find() const
{
    const std::size_t count = m_tone.size();
    if (m_heard.size() < count) {
        return std::nullopt;
    }
    const double own = energyOf(m_tone.data(), count);
    double heard = energyOf(m_heard.data(), count);
    double best = 0;
    std::size_t bestAt = 0;
    for (std::size_t at = 0; at + count <= m_heard.size(); ++at) {
        double sum = 0;
        for (std::size_t i = 0; i < count; ++i) {
            sum += static_cast<double>(m_tone[i]) * m_heard[at + i];
        }
        const double likeness = heard > 0 ? std::abs(sum) / std::sqrt(own * heard) : 0;
        if (likeness > best) {
            best = likeness;
            bestAt = at;
        }
        if (at + count < m_heard.size()) {
            heard += static_cast<double>(m_heard[at + count]) * m_heard[at + count] -
                     static_cast<double>(m_heard[at]) * m_heard[at];
        }
    }
    if (best < leastLikeness) {
        return std::nullopt;
    }
    const auto after =
        std::upper_bound(m_arrivals.begin(), m_arrivals.end(), bestAt,
                         [](std::size_t sample, const Arrival& arrival) { return sample < arrival.sample; });
    return Echo{best, std::prev(after)->time};
}
