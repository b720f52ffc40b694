#include "standins/framesmith/CaptureChannel.h"

#include "standins/framesmith/PacketMaker.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace framesmith {

namespace {

constexpr int lowest = std::numeric_limits<std::int16_t>::min();
constexpr int highest = std::numeric_limits<std::int16_t>::max();

} // namespace

CaptureChannel::CaptureChannel(const FrameSmithCaptureOptions& options, SourceFactory makeSource)
    : m_options(options), m_makeSource(std::move(makeSource))
{
}

CaptureChannel::~CaptureChannel()
{
    stop();
}

bool CaptureChannel::onCaptureThread() const
{
    return m_threadId.load() == std::this_thread::get_id();
}

Code CaptureChannel::start()
{
    const std::lock_guard lock(m_mutex);
    if (m_started) {
        return WrongState;
    }
    auto source = m_makeSource();
    const Code code = source->start();
    if (code != Success) {
        return code;
    }
    m_started = true;
    m_source = std::move(source);
    m_thread = std::thread(&CaptureChannel::run, this);
    return Success;
}

Code CaptureChannel::stop()
{
    if (onCaptureThread()) {
        return WrongThread;
    }
    const std::lock_guard lock(m_mutex);
    if (!m_started) {
        return WrongState;
    }
    endThreads();
    m_started = false;
    return Success;
}

void CaptureChannel::end()
{
    if (onCaptureThread()) {
        return;
    }
    const std::lock_guard lock(m_mutex);
    endThreads();
}

void CaptureChannel::endThreads()
{
    if (!m_source) {
        return;
    }
    m_source->stop();
    m_thread.join();
    m_threadId = std::thread::id();
    m_source.reset();
}

void CaptureChannel::run()
{
    m_threadId = std::this_thread::get_id();
    constexpr DWORD millisecondsPerSecond = 1000;
    const std::size_t count = m_options.samplesPerFrame;
    const DWORD delay = m_options.samplesPerFrame * millisecondsPerSecond / m_options.sampleRate;
    std::vector<std::int16_t> samples(count);
    std::vector<std::uint8_t> buffer(PacketMaker::packetSize(count));
    PacketMaker maker;
    while (m_source->read(samples.data(), count)) {
        applyVolume(samples.data(), count);
        TMediaDataPacketInfo record{};
        record.Buffer = buffer.data();
        if (maker.make(samples.data(), count, record)) {
            m_options.packetCallback(m_options.context, &record, delay);
        }
    }
}

void CaptureChannel::applyVolume(std::int16_t* samples, std::size_t count) const
{
    const int volume = m_mute ? 0 : m_volume.load();
    if (volume == neutralVolume) {
        return;
    }
    std::transform(samples, samples + count, samples, [volume](std::int16_t sample) {
        return static_cast<std::int16_t>(std::clamp(sample * volume / neutralVolume, lowest, highest));
    });
}

} // namespace framesmith
