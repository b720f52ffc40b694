#include "server/devices/simulated/CameraVoice.h"

#include "audio/PacketHeader.h"
#include "protocol/Words.h"
#include "system/MediaFiles.h"

#include <algorithm>
#include <chrono>

namespace {

constexpr int heardRate = 8000;     // Hz
constexpr int maxFileSeconds = 600; // the rest of a longer file is not spoken
constexpr int framesAtATime = 4096; // of a sound file
constexpr std::size_t millisecondsPerSecond = 1000;
constexpr std::uint64_t nanosecondsPerSecond = 1000000000;

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

CameraVoice::CameraVoice(const CameraVoiceConfig& config, std::shared_ptr<AlarmClock> clock)
    : m_config(config), m_clock(std::move(clock)), m_alarm(m_clock, [this] {
          if (m_config.kind == CameraVoiceConfig::Echo) {
              speakEcho();
          } else if (m_encoder) {
              speakFile();
          } else {
              speakRecording();
          }
      })
{
    if (m_config.kind == CameraVoiceConfig::Silent) {
        return;
    }
    m_encoder = TalkEncoder::create(*m_config.codec);
    if (m_encoder) {
        m_converter = std::make_unique<PcmConverter>(SampleFormat::S16, heardRate, 1, rate());
    }
}

CameraVoice::~CameraVoice() = default;

/** Of its packets, Hz. */
int CameraVoice::rate() const
{
    return m_encoder ? m_encoder->format().sampleRate : TalkFormat(*m_config.codec).sampleRate;
}

/** How much of a file should have been said, samples of its rate. */
std::uint64_t CameraVoice::samplesSinceStart() const
{
    const std::chrono::nanoseconds elapsed = m_clock->now() - m_start;
    return static_cast<std::uint64_t>(elapsed.count()) * static_cast<unsigned>(rate()) / nanosecondsPerSecond;
}

/** When so much of a file should have been said. */
AlarmClock::Time CameraVoice::timeOf(std::uint64_t samples) const
{
    const auto hertz = static_cast<unsigned>(rate());
    return m_start +
           std::chrono::nanoseconds((samples * nanosecondsPerSecond + hertz - 1) / hertz); // not too early
}

bool CameraVoice::start()
{
    if (m_config.kind == CameraVoiceConfig::Silent) {
        return true;
    }
    if (!m_encoder) {
        return m_config.kind == CameraVoiceConfig::File && startRecording();
    }
    if (m_config.kind == CameraVoiceConfig::File) {
        m_fileSamples = readSoundFile(m_config.file, rate());
        if (m_fileSamples.empty()) {
            return false;
        }
        m_start = m_clock->now();
        m_alarm.setTo(m_start);
    }
    return true;
}

void CameraVoice::stop()
{
    m_stopped = true;
    m_alarm.clear();
    m_heard.clear();
    m_heardSamples = 0;
}

void CameraVoice::hear(std::uint32_t position, std::vector<std::int16_t> samples)
{
    if (m_config.kind != CameraVoiceConfig::Echo || !m_encoder || m_stopped || samples.empty()) {
        return;
    }
    const std::size_t most =
        (static_cast<std::size_t>(m_config.echoDelay) + maxAhead) * heardRate / millisecondsPerSecond;
    if (m_heardSamples + samples.size() > most) {
        return;
    }
    m_heardSamples += samples.size();
    m_heard.push_back(
        {m_clock->now() + std::chrono::milliseconds(m_config.echoDelay), position, std::move(samples)});
    if (m_heard.size() == 1) {
        m_alarm.setTo(m_heard.front().due);
    }
}

/** Says the oldest of what it has heard. */
void CameraVoice::speakEcho()
{
    const Heard heard = std::move(m_heard.front());
    m_heard.pop_front();
    m_heardSamples -= heard.samples.size();
    if (!m_heard.empty()) {
        m_alarm.setTo(m_heard.front().due);
    }
    if (!m_positioned) {
        m_positioned = true;
        m_position = static_cast<std::uint32_t>(std::uint64_t{heard.position} *
                                                static_cast<unsigned>(rate()) / heardRate);
    }
    m_converter->convert(heard.samples.data(), heard.samples.size(), m_pending);
    speakPending();
}

/** Says what is due of a file, up to its last whole frame. */
void CameraVoice::speakFile()
{
    const auto frameSamples = static_cast<std::size_t>(m_encoder->format().frameSamples);
    const auto end = static_cast<std::size_t>(
        std::min(samplesSinceStart(), static_cast<std::uint64_t>(m_fileSamples.size())));
    const auto at = [this](std::size_t index) {
        return m_fileSamples.begin() + static_cast<std::ptrdiff_t>(index);
    };
    m_pending.insert(m_pending.end(), at(m_filePosition), at(end));
    m_filePosition = end;
    if (end < m_fileSamples.size()) {
        speakPending();
        const std::size_t next = end - m_pending.size() + frameSamples;
        m_alarm.setTo(timeOf(std::min(next, m_fileSamples.size())));
        return;
    }
    m_pending.resize(m_pending.size() + frameSamples); // the last frame is filled up with silence
    speakPending();
}

/** Says what waits, but for less than a frame. */
void CameraVoice::speakPending()
{
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
    m_start = m_clock->now();
    m_alarm.setTo(m_start);
    return true;
}

/** Sends the packets whose time has come, as if they had been made now. */
void CameraVoice::speakRecording()
{
    const TalkFormat format(*m_config.codec);
    const std::uint64_t due = samplesSinceStart();
    for (; m_recordingPosition < m_recording.size(); ++m_recordingPosition) {
        const RecordedPacket& packet = m_recording[m_recordingPosition];
        const std::uint64_t end = std::uint64_t{m_position} + packet.samples;
        if (end > due) {
            m_alarm.setTo(timeOf(end));
            return;
        }
        Q_EMIT spoke(packetOf(packet.bitstream, format, packet.frames));
        m_position += packet.samples;
    }
}

VoicePacket CameraVoice::packetOf(const QByteArray& bitstream, const TalkFormat& format,
                                  unsigned frames) const
{
    using std::chrono::microseconds;
    const auto time = std::chrono::duration_cast<microseconds>(m_clock->now().time_since_epoch());
    return {bitstream, format.streamType, format.sampleRate,
            frames,    m_position,        static_cast<std::uint64_t>(time.count())};
}
