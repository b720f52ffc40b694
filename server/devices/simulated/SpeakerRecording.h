#pragma once

#include "audio/NumberedFile.h"
#include "audio/WaveFileWriter.h"

#include <algorithm>
#include <cstdint>
#include <vector>

/**
 * What a simulated speaker played, as a WAV file on the server's time line: pauses are silence of their
 * length. One that begins later than maxPause after the server begins with its sound.
 */
class SpeakerRecording
{
public:
    static constexpr int sampleRate = 16000; ///< Hz
    static constexpr std::uint64_t maxPause =
        std::uint64_t{10} * sampleRate; ///< Samples; a longer one is cut to it.

    /**
     * Makes the file, "speaker-ID-N.wav"; one that cannot be written is taken as written.
     *
     * @param position of the first sample on the server's time line, samples; 0 is the server's start
     */
    SpeakerRecording(const QString& directory, int speaker, std::uint64_t position)
        : m_path(NumberedFile::create(directory, QStringLiteral("speaker-%1").arg(speaker),
                                      QStringLiteral("wav"))),
          m_writer(m_path, sampleRate), m_end(position > maxPause ? position : 0)
    {
        fill(position);
    }

    /** Returns the file's path; empty when it could not be made. */
    const QString& path() const { return m_path; }

    /** @param position of the first sample on the server's time line, samples */
    void write(std::uint64_t position, const std::vector<std::int16_t>& samples)
    {
        fill(position);
        m_writer.write(samples);
        m_end = position + samples.size();
    }

private:
    void fill(std::uint64_t position)
    {
        if (position > m_end) {
            m_writer.write(std::vector<std::int16_t>(std::min(position - m_end, maxPause)));
            m_end = position;
        }
    }

    QString m_path;
    WaveFileWriter m_writer;
    std::uint64_t m_end; ///< Of what was written last, on the time line.
};
