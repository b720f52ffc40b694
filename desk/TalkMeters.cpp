#include "desk/TalkMeters.h"

#include "audio/SoundLevel.h"
#include "audio/TalkPacketDecoder.h"
#include "protocol/Words.h"

#include <QVariantMap>

#include <algorithm>
#include <cmath>

namespace {

constexpr int tickInterval = 50; // ms
constexpr int ticksPerSecond = 1000 / tickInterval;
constexpr std::size_t enoughToFlow = 3; // pieces of sound
constexpr std::size_t maxWaiting = 10;
constexpr qreal meterBottom = -60.0; // dBFS
constexpr qreal fall = 0.08;         // a tick: from full to nothing in 0.6 s
constexpr int maxStreams = 64;
constexpr float fullScale = 32768.0F;

} // namespace

void TalkMeters::Meter::take(const std::vector<std::int16_t>& sound, int samplesPerSecond)
{
    const qreal loud = 1.0 - std::max(SoundLevel::rmsDbfs(sound), meterBottom) / meterBottom;
    level = std::max(level, std::clamp(loud, 0.0, 1.0));
    const auto piece = static_cast<std::size_t>(std::max(samplesPerSecond / ticksPerSecond, 1));
    for (const std::int16_t sample : sound) {
        peak = std::max(peak, std::abs(static_cast<float>(sample)) / fullScale);
        if (++samples >= piece) {
            waiting.push_back(peak);
            samples = 0;
            peak = 0;
        }
    }
    while (waiting.size() > maxWaiting) {
        waiting.pop_front();
    }
    flows = flows || waiting.size() >= enoughToFlow;
}

void TalkMeters::Meter::tick()
{
    level = std::max(level - fall, 0.0);
    float next = 0;
    if (flows && !waiting.empty()) {
        next = waiting.front();
        waiting.pop_front();
    }
    flows = flows && !waiting.empty();
    history.peaks[history.next] = next;
    history.next = (history.next + 1) % historyLength;
}

TalkMeters::TalkMeters(QTimer* clock) : m_clock(clock != nullptr ? *clock : m_ownClock)
{
    m_clock.setInterval(tickInterval);
    connect(&m_clock, &QTimer::timeout, this, &TalkMeters::tick);
}

void TalkMeters::setActive(bool active)
{
    if (m_active == active) {
        return;
    }
    m_active = active;
    if (active) {
        m_captured = Meter();
        m_received = Meter();
        m_streams.clear();
        m_clock.start();
    }
}

void TalkMeters::tick()
{
    m_captured.tick();
    m_received.tick();
    Q_EMIT ticked();
    if (!m_active && m_captured.level <= 0 && m_received.level <= 0) {
        m_clock.stop(); // the meters have come down
    }
}

void TalkMeters::commandSent(const QString& command, const QVariant& payload, bool /*accepted*/)
{
    if (command != Vocabulary::TalkData) {
        return;
    }
    Q_EMIT packetSent();
    const QByteArray text = payload.toMap().value(Vocabulary::talkData).toString().toLatin1();
    if (const auto talk = TalkPacketDecoder::decode(QByteArray::fromBase64(text))) {
        m_captured.take(talk->samples, TalkPacketDecoder::sampleRate);
    }
}

void TalkMeters::eventArrived(const QString& event, const QVariant& payload)
{
    if (event != Vocabulary::AudioReceived || !m_active) {
        return;
    }
    const QVariantMap fields = payload.toMap().value(event).toMap();
    const auto number = [&fields](const QString& name) { return fields.value(name).toUInt(); };
    const QByteArray packet = QByteArray::fromBase64(fields.value(Words::AudioData).toString().toLatin1());
    const auto size = static_cast<std::uint32_t>(packet.size());
    const std::uint32_t offset = std::min(number(Words::Offset), size);
    const std::uint32_t length = std::min(number(Words::BitstreamSize), size - offset);
    const QString token = fields.value(Words::Token).toString();
    auto& stream = m_streams[token];
    if (!stream) {
        if (m_streams.size() > maxStreams) {
            m_streams.clear();
            return;
        }
        StreamParameters parameters;
        parameters.streamType = number(Words::StreamType);
        parameters.sampleRate = number(Words::AudioSamplingFreq);
        parameters.channels = static_cast<std::uint8_t>(number(Words::AudioChannelNum));
        parameters.frameNumber = number(Words::FrameNumber);
        stream = std::make_shared<PacketStream>(parameters);
    }
    if (const auto samples = stream->decode(packet.mid(static_cast<int>(offset), static_cast<int>(length)))) {
        const auto channels = static_cast<int>(std::clamp(number(Words::AudioChannelNum) & 255U, 1U, 8U));
        m_received.take(*samples, channels * static_cast<int>(std::clamp(number(Words::AudioSamplingFreq),
                                                                         8000U, 192000U)));
    }
}
