#include "TalkMeters.h"

#include <SoundLevel.h>

#include <QVariantMap>

#include <algorithm>
#include <cmath>

namespace {

constexpr int tickInterval = 50;     // ms
constexpr qreal meterBottom = -60.0; // dBFS
constexpr qreal fall = 0.08;         // a tick: from full to nothing in 0.6 s
constexpr int mostStreams = 64;
constexpr float fullScale = 32768.0F;

} // namespace

void TalkMeters::Meter::take(const std::vector<std::int16_t>& samples)
{
    const qreal loud = 1.0 - std::max(SoundLevel::rmsDbfs(samples), meterBottom) / meterBottom;
    level = std::max(level, std::clamp(loud, 0.0, 1.0));
    for (const std::int16_t sample : samples) {
        peak = std::max(peak, std::abs(static_cast<float>(sample)) / fullScale);
    }
}

void TalkMeters::Meter::tick()
{
    level = std::max(level - fall, 0.0);
    history.peaks[history.next] = peak;
    history.next = (history.next + 1) % historyLength;
    peak = 0;
}

TalkMeters::TalkMeters()
{
    m_timer.setInterval(tickInterval);
    connect(&m_timer, &QTimer::timeout, this, &TalkMeters::tick);
}

void TalkMeters::setActive(bool active)
{
    if (m_active == active) {
        return;
    }
    m_active = active;
    if (active) {
        m_said = Meter();
        m_heard = Meter();
        m_streams.clear();
        m_timer.start();
    }
}

void TalkMeters::tick()
{
    m_said.tick();
    m_heard.tick();
    Q_EMIT ticked();
    if (!m_active && m_said.level <= 0 && m_heard.level <= 0) {
        m_timer.stop(); // the meters have come down
    }
}

void TalkMeters::commandSent(const QString& command, const QVariant& payload, bool /*accepted*/)
{
    if (command != QLatin1String("TalkData")) {
        return;
    }
    Q_EMIT packetSent();
    const QByteArray text = payload.toMap().value(QStringLiteral("talkData")).toString().toLatin1();
    if (const auto talk = m_decoder.decode(QByteArray::fromBase64(text))) {
        m_said.take(talk->samples);
    }
}

void TalkMeters::eventArrived(const QString& event, const QVariant& payload)
{
    if (event != QLatin1String("AudioReceived") || !m_active) {
        return;
    }
    const QVariantMap fields = payload.toMap().value(event).toMap();
    const auto number = [&fields](const char* name) { return fields.value(QLatin1String(name)).toUInt(); };
    const QByteArray packet =
        QByteArray::fromBase64(fields.value(QStringLiteral("AudioData")).toString().toLatin1());
    const auto size = static_cast<std::uint32_t>(packet.size());
    const std::uint32_t offset = std::min(number("Offset"), size);
    const std::uint32_t length = std::min(number("BitstreamSize"), size - offset);
    const QString token = fields.value(QStringLiteral("Token")).toString();
    auto& stream = m_streams[token];
    if (!stream) {
        if (m_streams.size() > mostStreams) {
            m_streams.clear();
            return;
        }
        StreamParameters parameters;
        parameters.streamType = number("StreamType");
        parameters.sampleRate = number("AudioSamplingFreq");
        parameters.channels = static_cast<std::uint8_t>(number("AudioChannelNum"));
        parameters.frameNumber = number("FrameNumber");
        stream = std::make_shared<PacketStream>(parameters);
    }
    if (const auto samples = stream->decode(packet.mid(static_cast<int>(offset), static_cast<int>(length)))) {
        m_heard.take(*samples);
    }
}
