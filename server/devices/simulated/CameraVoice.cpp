#include "server/devices/simulated/CameraVoice.h"

#include "audio/PacketHeader.h"
#include "protocol/Words.h"
#include "system/MediaFiles.h"

#include <chrono>

namespace {

constexpr int heardRate = 8000;     // Hz
constexpr int maxFileSeconds = 600; // the rest of a longer file is not spoken
constexpr int framesAtATime = 4096; // of a sound file
constexpr int tickInterval = 10;    // ms
constexpr qint64 millisecondsPerSecond = 1000;

std::uint64_t steadyMicroseconds()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(now).count());
}

/** A sound file as 16-bit mono at a rate; empty when it cannot be read. */
std::vector<std::int16_t> readSoundFile(const QString& path, int rate)
{
    SF_INFO info{};
    const std::unique_ptr<SNDFILE, int (*)(SNDFILE*)> file(MediaFiles::open(path, SFM_READ, &info),
                                                           &sf_close);
    std::vector<std::int16_t> samples;
    if (!file) {
        return samples;
    }
    PcmConverter converter(SampleFormat::S16, info.samplerate, info.channels, rate);
    if (!converter.valid()) {
        return samples;
    }
    const std::size_t most = static_cast<std::size_t>(rate) * maxFileSeconds;
    std::vector<std::int16_t> buffer(static_cast<std::size_t>(framesAtATime) *
                                     static_cast<std::size_t>(info.channels));
    while (samples.size() < most) {
        const sf_count_t frames = sf_readf_short(file.get(), buffer.data(), framesAtATime);
        if (frames <= 0) {
            converter.flush(samples);
            break;
        }
        converter.convert(buffer.data(), static_cast<std::size_t>(frames), samples);
    }
    return samples;
}

} // namespace

CameraVoice::CameraVoice(const CameraVoiceConfig& config) : m_config(config)
{
    if (m_config.kind == CameraVoiceConfig::Silent) {
        return;
    }
    m_encoder = TalkEncoder::create(*m_config.codec);
    if (m_encoder) {
        m_converter =
            std::make_unique<PcmConverter>(SampleFormat::S16, heardRate, 1, m_encoder->format().sampleRate);
    }
    m_ticker.setTimerType(Qt::PreciseTimer);
    connect(&m_ticker, &QTimer::timeout, this,
            m_encoder ? &CameraVoice::speakFile : &CameraVoice::speakRecording);
}

CameraVoice::~CameraVoice() = default;

bool CameraVoice::start()
{
    if (m_config.kind == CameraVoiceConfig::Silent) {
        return true;
    }
    if (!m_encoder) {
        return m_config.kind == CameraVoiceConfig::File && startRecording();
    }
    if (m_config.kind == CameraVoiceConfig::File) {
        m_fileSamples = readSoundFile(m_config.file, m_encoder->format().sampleRate);
        if (m_fileSamples.empty()) {
            return false;
        }
        m_clock.start();
        m_ticker.start(tickInterval);
    }
    return true;
}

void CameraVoice::stop()
{
    m_stopped = true;
    m_ticker.stop();
}

void CameraVoice::hear(std::uint32_t position, const std::vector<std::int16_t>& samples)
{
    if (m_config.kind != CameraVoiceConfig::Echo || !m_encoder) {
        return;
    }
    QTimer::singleShot(m_config.echoDelay, Qt::PreciseTimer, this, [this, position, samples] {
        if (m_stopped) {
            return;
        }
        if (!m_positioned) {
            m_positioned = true;
            m_position = static_cast<std::uint32_t>(
                std::uint64_t{position} * static_cast<unsigned>(m_encoder->format().sampleRate) / heardRate);
        }
        std::vector<std::int16_t> converted;
        m_converter->convert(samples.data(), samples.size(), converted);
        speak(converted);
    });
}

void CameraVoice::speakFile()
{
    const qint64 due = m_clock.elapsed() * m_encoder->format().sampleRate / millisecondsPerSecond;
    const auto end = std::min(static_cast<std::size_t>(due), m_fileSamples.size());
    const auto at = [this](std::size_t index) {
        return m_fileSamples.begin() + static_cast<std::ptrdiff_t>(index);
    };
    speak(std::vector<std::int16_t>(at(m_filePosition), at(end)));
    m_filePosition = end;
    if (end == m_fileSamples.size()) {
        m_ticker.stop();
        // The last frame is filled up with silence.
        speak(std::vector<std::int16_t>(static_cast<std::size_t>(m_encoder->format().frameSamples)));
    }
}

void CameraVoice::speak(const std::vector<std::int16_t>& samples)
{
    m_pending.insert(m_pending.end(), samples.begin(), samples.end());
    const auto frameSamples = static_cast<std::size_t>(m_encoder->format().frameSamples);
    std::size_t used = 0;
    for (; m_pending.size() - used >= frameSamples; used += frameSamples) {
        const QByteArray bitstream = m_encoder->encode(m_pending.data() + used);
        if (!bitstream.isEmpty()) {
            Q_EMIT spoke(packetOf(bitstream, m_encoder->format(), 1));
        }
        m_position += static_cast<std::uint32_t>(frameSamples);
    }
    m_pending.erase(m_pending.begin(), m_pending.begin() + static_cast<std::ptrdiff_t>(used));
}

bool CameraVoice::startRecording()
{
    m_recording = readRecordedStream(m_config.file, *m_config.codec);
    if (m_recording.empty()) {
        return false;
    }
    m_clock.start();
    m_ticker.start(tickInterval);
    return true;
}

/** Sends the packets whose time has come, as if they had been made now. */
void CameraVoice::speakRecording()
{
    const TalkFormat format(*m_config.codec);
    const auto due =
        static_cast<std::uint32_t>(m_clock.elapsed() * format.sampleRate / millisecondsPerSecond);
    while (m_recordingPosition < m_recording.size()) {
        const RecordedPacket& packet = m_recording[m_recordingPosition];
        if (m_position + packet.samples > due) {
            return;
        }
        Q_EMIT spoke(packetOf(packet.bitstream, format, packet.frames));
        m_position += packet.samples;
        ++m_recordingPosition;
    }
    m_ticker.stop();
}

VoicePacket CameraVoice::packetOf(const QByteArray& bitstream, const TalkFormat& format,
                                  unsigned frames) const
{
    return {bitstream, format.streamType, format.sampleRate, frames, m_position, steadyMicroseconds()};
}
