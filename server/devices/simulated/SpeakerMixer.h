#pragma once

#include "server/devices/simulated/SimulatedConfig.h"
#include "server/devices/simulated/SpeakerRecordings.h"

#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <vector>

class LocalOutput;

/**
 * The simulated speakers: mixes for each of them what is played on it, in steps of 20 ms of one clock, so
 * that the speakers of a group are in step to the sample. A source is read once a step for all of its
 * speakers, and nothing is added up for a speaker with a single one.
 *
 *   sources (a file on some speakers, a talk to one) --> mix per speaker --> SpeakerRecordings
 *                                                                        '--> LocalOutput, if asked
 */
class SpeakerMixer : public QObject
{
    Q_OBJECT

public:
    static constexpr int sampleRate = SpeakerRecording::sampleRate; ///< Hz, mono
    static constexpr int stepTime = 20;                             ///< ms

    /** Appends up to so many samples; false when there will be no more. */
    using Source = std::function<bool(std::size_t count, std::vector<std::int16_t>& out)>;

    /** A moment of the clock that all back ends share. */
    using Time = std::chrono::steady_clock::time_point;

    /** How long a speaker plays nothing before its recording is closed. */
    static constexpr std::chrono::seconds restTime{10};

    /**
     * @param directory of the recordings
     * @param aloud also play on this machine
     * @param written is given the paths of the recordings
     * @param rest in place of restTime
     */
    SpeakerMixer(const QString& directory, bool aloud, std::shared_ptr<SimulatedRecordings> written,
                 std::chrono::milliseconds rest = restTime);
    ~SpeakerMixer() override;

    /** Plays a source on speakers from the first step after @p start on; returns its number. */
    int addSource(const QList<int>& speakers, Source source, Time start = Time());

    /** Stops a source at once; does nothing for an unknown number. */
    void removeSource(int number);

    /** Moves a running source to other speakers. */
    void setSpeakers(int number, const QList<int>& speakers);

Q_SIGNALS:
    /** A source had no more sound; it is gone. */
    void sourceEnded(int number);

private:
    using Samples = std::vector<std::int16_t>;
    struct Playing
    {
        QList<int> speakers;
        Source source;
        qint64 firstStep = 0;
        std::shared_ptr<Samples> samples; ///< Of this step; empty for none.
    };

    void tick();
    void playStep();
    void read(int number, Playing& playing, QList<int>& ended);
    void attach(const Playing& playing);
    void detach(const Playing& playing);
    SpeakerRecordings::Sound mix(const std::vector<const Playing*>& sources);
    void playAloud();

    SpeakerRecordings m_recordings;
    std::map<int, Playing> m_sources;                      ///< By number.
    std::map<int, std::vector<const Playing*>> m_speakers; ///< What plays on each.
    std::unique_ptr<LocalOutput> m_output;
    int m_lastNumber = 0;
    QElapsedTimer m_clock;
    qint64 m_step = 0; ///< The next step to play, since the start of the clock.
    QTimer m_timer;

    std::vector<std::int32_t> m_sum; ///< Of a speaker; kept from one to the next.
};
