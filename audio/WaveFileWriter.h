#pragma once

#include <QString>

#include <cstdint>
#include <vector>

struct sf_private_tag;

/** Writes 16-bit mono PCM to a WAV file whose header is right at any moment, also after a crash. */
class WaveFileWriter
{
public:
    /** Creates or replaces the file. @param sampleRate Hz */
    WaveFileWriter(const QString& path, int sampleRate);
    ~WaveFileWriter();
    WaveFileWriter(const WaveFileWriter&) = delete;
    WaveFileWriter& operator=(const WaveFileWriter&) = delete;

    bool isOpen() const { return m_file != nullptr; }

    /** False when not all samples could be written, for instance because the disk is full. */
    bool write(const std::vector<std::int16_t>& samples);

private:
    sf_private_tag* m_file = nullptr;
};
