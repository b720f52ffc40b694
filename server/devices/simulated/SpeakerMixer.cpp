#include "server/devices/simulated/SpeakerMixer.h"

#include "server/devices/simulated/LocalOutput.h"

#include <algorithm>
#include <limits>

namespace {

constexpr std::size_t stepSamples = SpeakerMixer::sampleRate * SpeakerMixer::stepTime / 1000;
constexpr qint64 maxStepsAtOnce = 50; // one second; what a halted server missed beyond is skipped

std::vector<std::int16_t> limited(const std::vector<std::int32_t>& sum)
{
    std::vector<std::int16_t> samples(sum.size());
    std::transform(sum.begin(), sum.end(), samples.begin(), [](std::int32_t value) {
        return static_cast<std::int16_t>(std::clamp<std::int32_t>(
            value, std::numeric_limits<std::int16_t>::min(), std::numeric_limits<std::int16_t>::max()));
    });
    return samples;
}

} // namespace

SpeakerMixer::SpeakerMixer(const QString& directory, bool aloud, std::shared_ptr<SimulatedRecordings> written,
                           std::chrono::milliseconds rest)
    : m_recordings(directory, written, rest)
{
    written->speakers.clear();
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
    Playing& playing = m_sources[++m_lastNumber];
    playing.speakers = speakers;
    playing.source = std::move(source);
    playing.firstStep = due / stepTime;
    attach(playing);
    return m_lastNumber;
}

void SpeakerMixer::removeSource(int number)
{
    const auto playing = m_sources.find(number);
    if (playing == m_sources.end()) {
        return;
    }
    detach(playing->second);
    m_sources.erase(playing);
    if (m_sources.empty()) {
        m_timer.stop();
    }
}

void SpeakerMixer::setSpeakers(int number, const QList<int>& speakers)
{
    const auto playing = m_sources.find(number);
    if (playing != m_sources.end()) {
        detach(playing->second);
        playing->second.speakers = speakers;
        attach(playing->second);
    }
}

void SpeakerMixer::attach(const Playing& playing)
{
    for (const int speaker : playing.speakers) {
        m_speakers[speaker].push_back(&playing);
    }
}

void SpeakerMixer::detach(const Playing& playing)
{
    for (const int speaker : playing.speakers) {
        const auto found = m_speakers.find(speaker);
        if (found == m_speakers.end()) {
            continue;
        }
        auto& sources = found->second;
        sources.erase(std::remove(sources.begin(), sources.end(), &playing), sources.end());
        if (sources.empty()) {
            m_speakers.erase(found);
        }
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
    QList<int> ended;
    for (auto& [number, playing] : m_sources) {
        read(number, playing, ended);
    }
    for (const auto& [speaker, sources] : m_speakers) {
        if (const auto sound = mix(sources)) {
            m_recordings.write(speaker, static_cast<std::uint64_t>(m_step) * stepSamples, sound);
        }
    }
    if (m_output) {
        playAloud();
    }
    for (const int number : qAsConst(ended)) {
        removeSource(number);
        Q_EMIT sourceEnded(number);
    }
}

/** Reads what a source plays in this step. */
void SpeakerMixer::read(int number, Playing& playing, QList<int>& ended)
{
    if (!playing.samples || playing.samples.use_count() > 1) { // the last step's waits for a file
        playing.samples = std::make_shared<Samples>();
    }
    playing.samples->clear();
    if (m_step < playing.firstStep) {
        return;
    }
    if (!playing.source(stepSamples, *playing.samples)) {
        ended.append(number);
    }
    if (!playing.samples->empty()) {
        playing.samples->resize(stepSamples);
    }
}

/** What a speaker plays in this step; null for nothing. A single source is that, without a copy. */
SpeakerRecordings::Sound SpeakerMixer::mix(const std::vector<const Playing*>& sources)
{
    const Playing* only = nullptr;
    bool several = false;
    for (const Playing* playing : sources) {
        if (playing->samples->empty()) {
            continue;
        }
        if (only == nullptr) {
            only = playing;
            continue;
        }
        if (!several) {
            m_sum.assign(only->samples->begin(), only->samples->end());
            several = true;
        }
        std::transform(m_sum.begin(), m_sum.end(), playing->samples->begin(), m_sum.begin(), std::plus<>());
    }
    if (several) {
        return std::make_shared<Samples>(limited(m_sum));
    }
    return only != nullptr ? only->samples : nullptr;
}

/** Plays what all speakers play in this step on this machine. */
void SpeakerMixer::playAloud()
{
    m_sum.assign(stepSamples, 0);
    for (const auto& [number, playing] : m_sources) {
        if (!playing.samples->empty()) {
            const auto times = static_cast<std::int32_t>(playing.speakers.size());
            std::transform(m_sum.begin(), m_sum.end(), playing.samples->begin(), m_sum.begin(),
                           [times](std::int32_t sum, std::int16_t sample) { return sum + times * sample; });
        }
    }
    m_output->play(limited(m_sum));
}
