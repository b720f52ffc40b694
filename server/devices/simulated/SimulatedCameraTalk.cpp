#include "server/devices/simulated/SimulatedCameraTalk.h"

namespace {

constexpr std::uint32_t maxGap = 10 * TalkPacketDecoder::sampleRate;                  // samples
constexpr std::uint64_t maxRecorded = 4ULL * 60 * 60 * TalkPacketDecoder::sampleRate; // samples, four hours

} // namespace

SimulatedCameraTalk::SimulatedCameraTalk(const QString& path, const CameraVoiceConfig& voice,
                                         std::shared_ptr<AlarmClock> clock)
    : m_writer(path, TalkPacketDecoder::sampleRate), m_voice(voice, std::move(clock))
{
    connect(&m_voice, &CameraVoice::spoke, this, &DeviceTalk::spoke);
}

bool SimulatedCameraTalk::start()
{
    if (!m_voice.start()) {
        return false;
    }
    QMetaObject::invokeMethod(this, &DeviceTalk::opened, Qt::QueuedConnection);
    return true;
}

bool SimulatedCameraTalk::hear(const QByteArray& packet)
{
    const auto talk = m_decoder.decode(packet);
    if (!talk) {
        return false;
    }
    const std::uint32_t gap = talk->position - m_nextPosition;
    std::vector<std::int16_t> samples;
    if (m_packets > 0 && gap <= maxGap) {
        samples.resize(gap); // lost packets are heard as silence of their length
    }
    samples.insert(samples.end(), talk->samples.begin(), talk->samples.end());
    m_nextPosition = talk->position + static_cast<std::uint32_t>(talk->samples.size());
    ++m_packets;
    m_recorded += samples.size();
    m_voice.hear(talk->position, talk->samples);
    return m_recorded <= maxRecorded && m_writer.write(samples);
}

void SimulatedCameraTalk::close()
{
    m_voice.stop();
    QMetaObject::invokeMethod(this, &DeviceTalk::closed, Qt::QueuedConnection);
}
