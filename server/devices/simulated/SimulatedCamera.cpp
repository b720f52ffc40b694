#include "server/devices/simulated/SimulatedCamera.h"

#include "audio/NumberedFile.h"

#include <QRegularExpression>

namespace {

constexpr std::uint32_t maxGap = 10 * PacketDecoder::sampleRate;                  // samples
constexpr std::uint64_t maxRecorded = 4ULL * 60 * 60 * PacketDecoder::sampleRate; // samples, four hours

QString fileNameOf(const QString& cameraId)
{
    static const QRegularExpression unsafe(QStringLiteral("[^A-Za-z0-9_-]"));
    return QString(cameraId).replace(unsafe, QStringLiteral("_"));
}

} // namespace

CameraTalk::CameraTalk(const QString& path, const CameraVoiceConfig& voice)
    : m_path(path), m_writer(path, PacketDecoder::sampleRate), m_voice(voice)
{
}

bool CameraTalk::hear(const QByteArray& packet)
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

SimulatedCamera::SimulatedCamera(CameraConfig config, QString directory)
    : m_config(std::move(config)), m_directory(std::move(directory))
{
}

std::unique_ptr<CameraTalk> SimulatedCamera::openTalk()
{
    const QString path = NumberedFile::create(m_directory, fileNameOf(m_config.id), QStringLiteral("wav"));
    if (path.isEmpty()) {
        return nullptr;
    }
    auto talk = std::make_unique<CameraTalk>(path, m_config.voice);
    return talk->isRecording() ? std::move(talk) : nullptr;
}
