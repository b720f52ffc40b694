#pragma once

#include "audio/WaveFileWriter.h"

#include <cstdint>
#include <vector>

/** What a simulated speaker played, as a WAV file on the server's time line: pauses are silence of their
 * length. */
class SpeakerRecording
{
public:
    static constexpr int sampleRate = 16000;      ///< Hz
    static constexpr std::uint64_t maxPause = 10; ///< s; a longer one is cut to it

    /** @param path empty for a recording that cannot be written. Time 0 is the start of the server. */
    explicit SpeakerRecording(const QString& path) : m_path(path), m_writer(path, sampleRate) {}

    /** Returns the file's path. */
    const QString& path() const { return m_path; }

    /** Returns whether it can be written. */
    bool isOpen() const { return m_writer.isOpen(); }

    /** @param position of the first sample on the server's time line, samples */
    void write(std::uint64_t position, const std::vector<std::int16_t>& samples)
    {
        const std::uint64_t pause = position > m_end ? position - m_end : 0;
        m_writer.write(std::vector<std::int16_t>(std::min(pause, maxPause * sampleRate)));
        m_writer.write(samples);
        m_end = position + samples.size();
    }

private:
    QString m_path;
    WaveFileWriter m_writer;
    std::uint64_t m_end = 0; ///< Of what was written last, on the time line.
};
