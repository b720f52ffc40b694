#pragma once

#include <QString>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

class BufferedWave;
class FlushThread;

/**
 * Writes 16-bit PCM to a WAV file. What is written is in the file within a second, and its header is valid at
 * any time: after a crash, the last second is missing. A file that ends is complete. Used by one thread at a
 * time, which does not wait for the disk but at the end, or when it is more than maxBuffered ahead of it.
 */
class WaveFileWriter
{
public:
    static constexpr std::size_t maxBuffered = 65536; ///< Bytes of sound that wait for the disk.

    /** Creates or replaces a file; @p sampleRate is in Hz. */
    WaveFileWriter(const QString& path, int sampleRate, int channels = 1);

    /** Writes what waits, and closes the file. */
    ~WaveFileWriter();
    WaveFileWriter(const WaveFileWriter&) = delete;
    WaveFileWriter& operator=(const WaveFileWriter&) = delete;

    /** Returns whether the file could be created. */
    bool isOpen() const { return m_file != nullptr; }

    /**
     * Appends samples, those of several channels interleaved.
     *
     * @return false when what waits cannot be written, for instance on a full disk; it goes on waiting, and
     * the samples are appended only if they are those that do not fit any more
     */
    bool write(const std::vector<std::int16_t>& samples);

    /** Writes what waits at once; returns false when not all could be written. */
    bool flush();

private:
    std::shared_ptr<FlushThread> m_flushes; ///< Null without a thread: then nothing waits.
    std::shared_ptr<BufferedWave> m_file;
};
