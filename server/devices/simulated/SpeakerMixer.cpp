#include "server/devices/simulated/SpeakerMixer.h"

#include "audio/NumberedFile.h"
#include "server/devices/simulated/LocalOutput.h"

#include <algorithm>
#include <limits>

namespace {

constexpr std::size_t stepSamples = SpeakerMixer::sampleRate * SpeakerMixer::stepTime / 1000;
constexpr qint64 maxStepsAtOnce = 50; // one second; what a halted server missed beyond is skipped

} // namespace

SpeakerMixer::SpeakerMixer(QString directory, bool aloud, std::shared_ptr<SimulatedRecordings> written)
    : m_directory(std::move(directory)), m_written(std::move(written))
{
    m_written->speakers.clear();
    if (aloud) {
        m_output = std::make_unique<LocalOutput>(sampleRate);
    }
    m_clock.start();
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &SpeakerMixer::tick);
}

SpeakerMixer::~SpeakerMixer() = default;

int SpeakerMixer::addSource(const QList<int>& speakers, Source source, Time start)
{
    using std::chrono::milliseconds;
    const auto wait = std::chrono::duration_cast<milliseconds>(start - std::chrono::steady_clock::now());
    const qint64 due = m_clock.elapsed() + std::max<qint64>(wait.count(), 0);
    if (m_sources.empty()) {
        m_step = m_clock.elapsed() / stepTime;
        m_timer.start(stepTime / 2);
    }
    m_sources[++m_lastNumber] = {speakers, std::move(source), due / stepTime};
    return m_lastNumber;
}

void SpeakerMixer::removeSource(int number)
{
    m_sources.erase(number);
    if (m_sources.empty()) {
        m_timer.stop();
    }
}

void SpeakerMixer::setSpeakers(int number, const QList<int>& speakers)
{
    const auto playing = m_sources.find(number);
    if (playing != m_sources.end()) {
        playing->second.speakers = speakers;
    }
}

void SpeakerMixer::tick()
{
    const qint64 now = m_clock.elapsed() / stepTime;
    m_step = std::max(m_step, now - maxStepsAtOnce);
    while (m_step < now && !m_sources.empty()) {
        playStep();
        ++m_step;
    }
}

void SpeakerMixer::playStep()
{
    Mix mix;
    QList<int> ended;
    std::vector<std::int16_t> samples;
    for (auto& [number, playing] : m_sources) {
        if (m_step < playing.firstStep) {
            continue;
        }
        samples.clear();
        if (!playing.source(stepSamples, samples)) {
            ended.append(number);
        }
        if (samples.empty()) {
            continue;
        }
        for (const int speaker : qAsConst(playing.speakers)) {
            auto& sum = mix[speaker];
            sum.resize(stepSamples);
            for (std::size_t i = 0; i < samples.size() && i < stepSamples; ++i) {
                sum[i] += samples[i];
            }
        }
    }
    write(mix);
    for (const int number : qAsConst(ended)) {
        removeSource(number);
        Q_EMIT sourceEnded(number);
    }
}

void SpeakerMixer::write(const Mix& mix)
{
    std::vector<std::int32_t> together(stepSamples);
    const auto limited = [](const std::vector<std::int32_t>& sum) {
        std::vector<std::int16_t> samples(sum.size());
        std::transform(sum.begin(), sum.end(), samples.begin(), [](std::int32_t value) {
            return static_cast<std::int16_t>(std::clamp<std::int32_t>(
                value, std::numeric_limits<std::int16_t>::min(), std::numeric_limits<std::int16_t>::max()));
        });
        return samples;
    };
    for (const auto& [speaker, sum] : mix) {
        auto& recording = m_recordings[speaker];
        if (!recording) {
            recording = std::make_unique<SpeakerRecording>(NumberedFile::create(
                m_directory, QStringLiteral("speaker-%1").arg(speaker), QStringLiteral("wav")));
            m_written->speakers.insert(speaker, recording->path());
        }
        recording->write(static_cast<std::uint64_t>(m_step) * stepSamples, limited(sum));
        std::transform(sum.begin(), sum.end(), together.begin(), together.begin(), std::plus<>());
    }
    if (m_output) {
        m_output->play(limited(together));
    }
}
