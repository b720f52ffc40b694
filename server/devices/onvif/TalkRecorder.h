#pragma once

#include "audio/PacketStream.h"
#include "audio/PcmConverter.h"
#include "audio/WaveFileWriter.h"
#include "server/devices/VoicePacket.h"

#include <deque>
#include <memory>
#include <mutex>
#include <vector>

/**
 * Keeps a talk as one stereo file at 8000 Hz: what is said left, what is heard right, in time with each
 * other. A sound is placed by its position, counted from when its first packet came; where that leaves the
 * clock by more than half a second, it is placed anew. say and hear may be called on any thread and do not
 * write; flush and the destructor are called on one, and do.
 */
class TalkRecorder
{
public:
    static constexpr int sampleRate = 8000; ///< Hz

    /** @param path of a file that is replaced @param start of the talk, microseconds of the steady clock */
    TalkRecorder(const QString& path, std::int64_t start);

    /** Writes what is left. */
    ~TalkRecorder();
    TalkRecorder(const TalkRecorder&) = delete;
    TalkRecorder& operator=(const TalkRecorder&) = delete;

    /** Returns whether the file could be created. */
    bool isOpen() const { return m_file.isOpen(); }

    /** Takes what was said. @param position of the first sample @param time when it came, microseconds */
    void say(std::uint32_t position, const QByteArray& muLaw, std::int64_t time);

    /** Takes what the camera said. */
    void hear(const VoicePacket& packet);

    /** Gives what is older than a second to the file, which has it within another. @param time now,
     * microseconds
     * @return false when what it was given before cannot be written */
    bool flush(std::int64_t time);

private:
    /** One side of the talk. */
    struct Side
    {
        bool started = false;
        std::uint32_t expected = 0;          ///< Position of the next sample.
        std::int64_t next = 0;               ///< Its place, samples since the start of the talk.
        std::vector<std::int16_t> samples{}; ///< From the first one that is not written.
    };

    void place(Side& side, std::uint32_t position, std::vector<std::int16_t> samples, std::int64_t time);
    std::vector<std::int16_t> decode(const VoicePacket& packet);
    bool writeUntil(std::int64_t end);

    std::int64_t m_start;
    WaveFileWriter m_file;
    std::int64_t m_written = 0; ///< Samples of each side.
    std::mutex m_mutex;         ///< Guards what follows.
    Side m_said;
    Side m_heard;
    std::uint32_t m_streamType = 0; ///< What the decoder is made for.
    std::unique_ptr<PacketStream> m_decoder;
    std::unique_ptr<PcmConverter> m_converter;
    std::int64_t m_reached = 0; ///< Samples since the start that any side has.
};
