#include "audio/WaveFileWriter.h"

#include "system/MediaFiles.h"

WaveFileWriter::WaveFileWriter(const QString& path, int sampleRate, int channels)
{
    SF_INFO info{};
    info.samplerate = sampleRate;
    info.channels = channels;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    m_file = MediaFiles::open(path, SFM_WRITE, &info);
    if (m_file != nullptr) {
        sf_command(m_file, SFC_SET_UPDATE_HEADER_AUTO, nullptr, SF_TRUE);
    }
}

WaveFileWriter::~WaveFileWriter()
{
    if (m_file != nullptr) {
        sf_close(m_file);
    }
}

bool WaveFileWriter::write(const std::vector<std::int16_t>& samples)
{
    const auto count = static_cast<sf_count_t>(samples.size());
    return m_file != nullptr && sf_write_short(m_file, samples.data(), count) == count;
}
