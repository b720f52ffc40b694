#pragma once

#include <QString>

#include <cstdint>
#include <vector>

struct sf_private_tag;

/** Writes 16-bit PCM to a WAV file whose header is valid at any time, also after a crash. */
class WaveFileWriter
{
public:
    /** Creates or replaces a file; @p sampleRate is in Hz. */
    WaveFileWriter(const QString& path, int sampleRate, int channels = 1);
    ~WaveFileWriter();
    WaveFileWriter(const WaveFileWriter&) = delete;
    WaveFileWriter& operator=(const WaveFileWriter&) = delete;

    /** Returns whether the file could be created. */
    bool isOpen() const { return m_file != nullptr; }

    /** Appends samples, those of several channels interleaved; returns false when not all could be written,
     * for instance on a full disk. */
    bool write(const std::vector<std::int16_t>& samples);

private:
    sf_private_tag* m_file = nullptr;
};
