#include "standins/framesmith/WaveFileSource.h"

#include "system/MediaFiles.h"

#include <algorithm>

namespace framesmith {

namespace {

constexpr sf_count_t framesPerRead = 4096;

} // namespace

WaveFileSource::WaveFileSource(QString path) : m_path(std::move(path)) {}

WaveFileSource::~WaveFileSource()
{
    if (m_file != nullptr) {
        sf_close(m_file);
    }
}

Code WaveFileSource::start()
{
    SF_INFO info{};
    m_file = MediaFiles::open(m_path, SFM_READ, &info);
    if (m_file == nullptr) {
        return FileFailed;
    }
    m_reads16Bit = (info.format & SF_FORMAT_SUBMASK) == SF_FORMAT_PCM_16;
    m_converter = std::make_unique<PcmConverter>(m_reads16Bit ? SampleFormat::S16 : SampleFormat::Float,
                                                 info.samplerate, info.channels);
    if (!m_converter->valid()) {
        return FileFailed;
    }
    m_input.resize(m_converter->bytesPerFrame() * framesPerRead);
    return Success;
}

void WaveFileSource::fill(std::size_t count)
{
    while (m_ready.size() < count && m_file != nullptr) {
        const sf_count_t frames =
            m_reads16Bit ? sf_readf_short(m_file, reinterpret_cast<short*>(m_input.data()), framesPerRead)
                         : sf_readf_float(m_file, reinterpret_cast<float*>(m_input.data()), framesPerRead);
        if (frames > 0) {
            m_converter->convert(m_input.data(), static_cast<std::size_t>(frames), m_ready);
        } else {
            m_converter->flush(m_ready);
            sf_close(m_file);
            m_file = nullptr;
        }
    }
}

bool WaveFileSource::read(std::int16_t* samples, std::size_t count)
{
    if (!m_clock) {
        m_clock.emplace(PacketClock::Clock::now(), static_cast<std::uint32_t>(count),
                        static_cast<std::uint32_t>(PcmConverter::captureRate));
    }
    {
        std::unique_lock lock(m_mutex);
        if (m_stopCondition.wait_until(lock, m_clock->dueTime(m_packets), [this] { return m_stopped; })) {
            return false;
        }
    }
    ++m_packets;
    fill(count);
    const std::size_t spoken = std::min(count, m_ready.size());
    const auto end = m_ready.begin() + static_cast<std::ptrdiff_t>(spoken);
    std::fill(std::copy(m_ready.begin(), end, samples), samples + count, std::int16_t{0});
    m_ready.erase(m_ready.begin(), end);
    return true;
}

void WaveFileSource::stop()
{
    const std::lock_guard lock(m_mutex);
    m_stopped = true;
    m_stopCondition.notify_all();
}

} // namespace framesmith
