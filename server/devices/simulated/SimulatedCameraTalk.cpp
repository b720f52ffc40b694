#include "server/devices/simulated/SimulatedCameraTalk.h"

#include "audio/TalkPacketDecoder.h"

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
    auto talk = TalkPacketDecoder::decode(packet);
    if (!talk) {
        return false;
    }
    const std::uint32_t gap = talk->position - m_nextPosition;
    const bool lost = m_packets > 0 && gap > 0 && gap <= maxGap;
    const std::size_t count = talk->samples.size();
    m_nextPosition = talk->position + static_cast<std::uint32_t>(count);
    ++m_packets;
    m_recorded += count + (lost ? gap : 0);
    bool written = m_recorded <= maxRecorded;
    if (written && lost) {
        written = m_writer.write(std::vector<std::int16_t>(gap)); // silence of their length
    }
    written = written && m_writer.write(talk->samples);
    m_voice.hear(talk->position, std::move(talk->samples));
    return written;
}

void SimulatedCameraTalk::close()
{
    m_voice.stop();
    m_writer.flush();
    QMetaObject::invokeMethod(this, &DeviceTalk::closed, Qt::QueuedConnection);
}
