#pragma once

#include "server/devices/simulated/SimulatedConfig.h"
#include "server/devices/simulated/SpeakerRecording.h"
#include "system/WorkerThread.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <deque>
#include <memory>
#include <unordered_map>
#include <vector>

/**
 * The recordings of all simulated speakers. Files are made and closed on a thread of their own, since a group
 * of thousands would stop all sound for seconds; what is played before a file is there waits for it. A
 * recording of a speaker that rests is closed; the next sound begins another. Used on one thread, which has
 * an event loop.
 */
class SpeakerRecordings : public QObject
{
    Q_OBJECT

public:
    /** Samples that nobody changes any more. */
    using Sound = std::shared_ptr<const std::vector<std::int16_t>>;

    static constexpr std::size_t maxWaiting = 500; ///< Sounds of a speaker; later ones are missing.

    /**
     * @param directory of the files; made when missing
     * @param written is given their paths, when they are there
     * @param rest how long a speaker plays nothing before its recording is closed
     */
    SpeakerRecordings(QString directory, std::shared_ptr<SimulatedRecordings> written,
                      std::chrono::milliseconds rest);

    /** Writes what waits. */
    ~SpeakerRecordings() override;

    /** Adds what a speaker plays. @param position of the first sample on the server's time line, samples */
    void write(int speaker, std::uint64_t position, const Sound& sound);

private:
    /** A file that is being made. */
    struct Opening
    {
        int speaker = 0;
        std::uint64_t position = 0;             ///< Of the first sound.
        std::unique_ptr<SpeakerRecording> made; ///< Of the thread of files, until it has reported.
    };
    struct Recording
    {
        std::unique_ptr<SpeakerRecording> file; ///< Null while it is being made.
        std::vector<std::pair<std::uint64_t, Sound>> waiting;
        int rest = 0; ///< Turns of the timer since the last sound.
    };

    void open(int speaker, std::uint64_t position);
    void opened();
    void closeRested();

    const QString m_directory;
    const std::shared_ptr<SimulatedRecordings> m_written;
    std::unordered_map<int, Recording> m_recordings; ///< By speaker.
    std::deque<std::shared_ptr<Opening>> m_openings; ///< In the order of their files.
    QTimer m_restTimer;                              ///< Runs while there are recordings.
    std::unique_ptr<WorkerThread> m_files;
};
