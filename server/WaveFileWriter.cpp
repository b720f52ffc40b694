#include "WaveFileWriter.h"

#include <sndfile.h>

#include <QFile>

WaveFileWriter::WaveFileWriter(const QString& path, int sampleRate)
{
    SF_INFO info{};
    info.samplerate = sampleRate;
    info.channels = 1;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
#ifdef _WIN32
    m_file = sf_wchar_open(reinterpret_cast<const wchar_t*>(path.utf16()), SFM_WRITE, &info);
#else
    m_file = sf_open(QFile::encodeName(path).constData(), SFM_WRITE, &info);
#endif
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
