#pragma once

#include "audio/PcmConverter.h"
#include "audio/TalkEncoder.h"
#include "server/devices/VoicePacket.h"
#include "server/devices/simulated/AlarmClock.h"
#include "server/devices/simulated/RecordedStream.h"
#include "src/decoders/CodecTable.h"
#include "src/vocabulary/StreamType.h"

#include <QObject>
#include <QString>

#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

/** What a simulated camera says during a talk. */
struct CameraVoiceConfig
{
    /** What it says. */
    enum Kind
    {
        Silent, ///< Nothing.
        Echo,   ///< What it hears, later.
        File,   ///< A sound file, once; of a codec without an encoder here, a packet dump.
    };
    Kind kind = Silent;                                        ///< What it says.
    const Codec* codec = Codec::byType(StreamType::G711MuLaw); ///< Of its packets.
    int echoDelay = 0;                                         ///< ms
    QString file;                                              ///< For File.
};

/** The voice of a camera in one talk: PCM in, packets out, at the pace of live sound. */
class CameraVoice : public QObject
{
    Q_OBJECT

public:
    static constexpr int maxAhead = 10 * 1000; ///< ms of sound that may wait beyond the delay of an echo.

    /** Makes a voice that does not speak yet. @param clock of all voices of the thread */
    CameraVoice(const CameraVoiceConfig& config, std::shared_ptr<AlarmClock> clock);
    ~CameraVoice() override;
    CameraVoice(const CameraVoice&) = delete;
    CameraVoice& operator=(const CameraVoice&) = delete;

    /** Starts to speak, for a camera that speaks by itself; false when its file cannot be read. */
    bool start();

    /** Ends the voice; spoke is not emitted any more, and what it has heard is freed. */
    void stop();

    /**
     * Hears what is said to the camera. Sound that comes faster than it is echoed is dropped beyond maxAhead.
     *
     * @param position of the first sample in the talk, samples; wraps
     * @param samples  8000 Hz mono
     */
    void hear(std::uint32_t position, std::vector<std::int16_t> samples);

Q_SIGNALS:
    /** Emitted for each packet, when it is due. */
    void spoke(const VoicePacket& packet);

private:
    /** What an echo will say. */
    struct Heard
    {
        AlarmClock::Time due;
        std::uint32_t position;
        std::vector<std::int16_t> samples;
    };

    void speakEcho();
    void speakPending();
    void speakFile();
    bool startRecording();
    void speakRecording();
    int rate() const;
    std::uint64_t samplesSinceStart() const;
    AlarmClock::Time timeOf(std::uint64_t samples) const;
    VoicePacket packetOf(const QByteArray& bitstream, const TalkFormat& format, unsigned frames) const;

    CameraVoiceConfig m_config;
    std::unique_ptr<TalkEncoder> m_encoder;
    std::unique_ptr<PcmConverter> m_converter; ///< From what it hears to the encoder's rate.
    std::deque<Heard> m_heard;                 ///< In the order of their times.
    std::size_t m_heardSamples = 0;            ///< Of all of m_heard.
    std::vector<std::int16_t> m_pending;       ///< Less than a frame, at the encoder's rate.
    std::vector<std::int16_t> m_fileSamples;   ///< At the encoder's rate.
    std::size_t m_filePosition = 0;
    std::vector<RecordedPacket> m_recording; ///< Packets in the place of an encoder's.
    std::size_t m_recordingPosition = 0;
    std::uint32_t m_position = 0; ///< Of the next packet's first sample.
    bool m_positioned = false;
    bool m_stopped = false;
    AlarmClock::Time m_start; ///< Of a file.
    std::shared_ptr<AlarmClock> m_clock;
    AlarmClock::Alarm m_alarm; ///< Rings when there is something to say.
};
