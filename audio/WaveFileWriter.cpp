#include "audio/WaveFileWriter.h"

#include "audio/FlushThread.h"
#include "system/MediaFiles.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <mutex>
#include <utility>

/** An open WAV file with what waits to be written to it. The thread that flushes may have it a bit longer
 * than the writer. */
class BufferedWave final : public Flushable
{
public:
    BufferedWave(SNDFILE* file, int channels) : m_file(file), m_channels(channels) {}

    /** How much waits. */
    struct Waiting
    {
        bool first = false; ///< Since the last flush.
        bool full = false;  ///< It is maxBuffered.
    };

    Waiting append(const std::vector<std::int16_t>& samples)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const bool first = m_waiting.empty();
        if (first) {
            m_waiting.reserve(m_usual);
        }
        m_waiting.insert(m_waiting.end(), samples.begin(), samples.end());
        return {first, m_waiting.size() * sizeof(std::int16_t) >= WaveFileWriter::maxBuffered};
    }

    bool hasFailed() const { return m_failed; }

    bool flush() override
    {
        const std::lock_guard<std::mutex> fileLock(m_fileMutex);
        std::vector<std::int16_t> samples;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            samples.swap(m_waiting);
            m_usual = samples.size();
        }
        if (m_file == nullptr || samples.empty()) {
            return true;
        }
        const auto frames = static_cast<sf_count_t>(samples.size()) / m_channels;
        const sf_count_t written =
            std::max<sf_count_t>(sf_write_short(m_file, samples.data(), frames * m_channels), 0) / m_channels;
        m_written += written;
        sf_command(m_file, SFC_UPDATE_HEADER_NOW, nullptr, 0);
        m_failed = written < frames;
        if (m_failed) {
            sf_seek(m_file, m_written, SEEK_SET); // where a part of a frame may be
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_waiting.insert(m_waiting.begin(), samples.begin() + written * m_channels, samples.end());
        }
        return !m_failed;
    }

    /** Writes what waits and closes the file. */
    void close()
    {
        flush();
        const std::lock_guard<std::mutex> fileLock(m_fileMutex);
        if (m_file != nullptr) {
            sf_close(std::exchange(m_file, nullptr));
        }
    }

private:
    std::mutex m_fileMutex; ///< Of the file.
    SNDFILE* m_file;
    const int m_channels;
    sf_count_t m_written = 0; ///< Frames.

    std::atomic<bool> m_failed{false}; ///< The last attempt to write.

    std::mutex m_mutex; ///< Of what waits; held for no call of the system.
    std::vector<std::int16_t> m_waiting;
    std::size_t m_usual = 0; ///< Samples that waited last time.
};

WaveFileWriter::WaveFileWriter(const QString& path, int sampleRate, int channels)
{
    SF_INFO info{};
    info.samplerate = sampleRate;
    info.channels = channels;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    if (SNDFILE* file = MediaFiles::open(path, SFM_WRITE, &info); file != nullptr) {
        m_file = std::make_shared<BufferedWave>(file, channels);
        m_flushes = FlushThread::shared();
        sf_command(file, SFC_UPDATE_HEADER_NOW, nullptr, 0);
    }
}

WaveFileWriter::~WaveFileWriter()
{
    if (m_file) {
        m_file->close();
    }
}

bool WaveFileWriter::write(const std::vector<std::int16_t>& samples)
{
    if (!m_file || (m_file->hasFailed() && !m_file->flush())) {
        return false;
    }
    if (samples.empty()) {
        return true;
    }
    const BufferedWave::Waiting waiting = m_file->append(samples);
    if (waiting.full || !m_flushes) {
        return m_file->flush();
    }
    if (waiting.first) {
        m_flushes->flushSoon(m_file);
    }
    return true;
}

bool WaveFileWriter::flush()
{
    return m_file && m_file->flush();
}
