#include "server/devices/simulated/SpeakerRecordings.h"

#include <system_error>
#include <utility>

namespace {

constexpr int turnsOfRest = 5;

} // namespace

SpeakerRecordings::SpeakerRecordings(QString directory, std::shared_ptr<SimulatedRecordings> written,
                                     std::chrono::milliseconds rest)
    : m_directory(std::move(directory)), m_written(std::move(written))
{
    m_restTimer.setInterval(rest / turnsOfRest);
    connect(&m_restTimer, &QTimer::timeout, this, &SpeakerRecordings::closeRested);
}

SpeakerRecordings::~SpeakerRecordings()
{
    m_files.reset(); // which drops what it has not begun
    while (!m_openings.empty()) {
        Opening& next = *m_openings.front();
        if (!next.made) {
            next.made = std::make_unique<SpeakerRecording>(m_directory, next.speaker, next.position);
        }
        opened();
    }
}

void SpeakerRecordings::write(int speaker, std::uint64_t position, const Sound& sound)
{
    const auto [found, added] = m_recordings.try_emplace(speaker);
    Recording& recording = found->second;
    recording.rest = 0;
    if (added) {
        open(speaker, position);
    }
    if (recording.file) {
        recording.file->write(position, *sound);
    } else if (recording.waiting.size() < maxWaiting) {
        recording.waiting.emplace_back(position, sound);
    }
}

void SpeakerRecordings::open(int speaker, std::uint64_t position)
{
    if (!m_restTimer.isActive()) {
        m_restTimer.start();
    }
    const auto opening = std::make_shared<Opening>();
    opening->speaker = speaker;
    opening->position = position;
    m_openings.push_back(opening);
    try {
        if (!m_files) {
            m_files = std::make_unique<WorkerThread>();
        }
    } catch (const std::system_error&) { // no thread: then sound waits
        opening->made = std::make_unique<SpeakerRecording>(m_directory, speaker, position);
        opened();
        return;
    }
    m_files->run([this, opening]() -> WorkerThread::Report {
        opening->made = std::make_unique<SpeakerRecording>(m_directory, opening->speaker, opening->position);
        return [this] { opened(); };
    });
}

/** The first of the files that were to be made is there. */
void SpeakerRecordings::opened()
{
    const std::shared_ptr<Opening> opening = std::move(m_openings.front());
    m_openings.pop_front();
    Recording& recording = m_recordings[opening->speaker];
    recording.file = std::move(opening->made);
    m_written->speakers.insert(opening->speaker, recording.file->path());
    for (const auto& [position, sound] : std::exchange(recording.waiting, {})) {
        recording.file->write(position, *sound);
    }
}

void SpeakerRecordings::closeRested()
{
    for (auto each = m_recordings.begin(); each != m_recordings.end();) {
        Recording& recording = each->second;
        if (!recording.file || ++recording.rest <= turnsOfRest) {
            ++each;
            continue;
        }
        if (m_files) {
            const auto file = std::make_shared<std::unique_ptr<SpeakerRecording>>(std::move(recording.file));
            m_files->run([file]() -> WorkerThread::Report {
                file->reset();
                return [] {};
            });
        }
        each = m_recordings.erase(each);
    }
    if (m_recordings.empty()) {
        m_restTimer.stop();
    }
}
