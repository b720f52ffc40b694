#include "server/devices/onvif/TalkRecorder.h"

#include "audio/G711.h"
#include "src/vocabulary/StreamType.h"

#include <algorithm>
#include <cstdlib>

namespace {

constexpr std::int64_t microsecondsPerSecond = 1000000;
constexpr std::int64_t tolerance = TalkRecorder::sampleRate / 2; // samples between position and clock
constexpr std::int64_t heldBack = TalkRecorder::sampleRate;      // samples that may still come
constexpr std::int64_t maxAhead = 4 * std::int64_t{TalkRecorder::sampleRate};
constexpr std::int64_t leadIn =
    microsecondsPerSecond / 10; // the first packet's sound is older than its coming
constexpr int channels = 2;

} // namespace

TalkRecorder::TalkRecorder(const QString& path, std::int64_t start)
    : m_start(start - leadIn), m_file(path, sampleRate, channels)
{
}

TalkRecorder::~TalkRecorder()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    writeUntil(m_reached);
}

void TalkRecorder::say(std::uint32_t position, const QByteArray& muLaw, std::int64_t time)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    place(m_said, position, G711::decodeMuLaw(muLaw), time);
}

void TalkRecorder::hear(const VoicePacket& packet)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto position = static_cast<std::uint32_t>(std::uint64_t{packet.position} * sampleRate /
                                                     static_cast<unsigned>(packet.sampleRate));
    place(m_heard, position, decode(packet), static_cast<std::int64_t>(packet.captureTime));
}

/** Puts sound where it belongs; what comes too late for that is dropped. */
void TalkRecorder::place(Side& side, std::uint32_t position, std::vector<std::int16_t> samples,
                         std::int64_t time)
{
    const auto count = static_cast<std::int64_t>(samples.size());
    const std::int64_t byClock = (time - m_start) * sampleRate / microsecondsPerSecond - count;
    std::int64_t at = side.next + static_cast<std::int32_t>(position - side.expected);
    if (!side.started || std::abs(at - byClock) > tolerance) {
        at = byClock;
    }
    side.started = true;
    side.expected = position + static_cast<std::uint32_t>(count);
    side.next = at + count;
    std::int64_t offset = at - m_written;
    if (offset > maxAhead) {
        return;
    }
    if (offset < 0) {
        samples.erase(samples.begin(),
                      samples.begin() + static_cast<std::ptrdiff_t>(std::min(-offset, count)));
        offset = 0;
    }
    if (side.samples.size() < static_cast<std::size_t>(offset) + samples.size()) {
        side.samples.resize(static_cast<std::size_t>(offset) + samples.size());
    }
    std::copy(samples.begin(), samples.end(), side.samples.begin() + static_cast<std::ptrdiff_t>(offset));
    m_reached = std::max(m_reached, m_written + offset + static_cast<std::int64_t>(samples.size()));
}

/** Returns the packet's sound at the file's rate, of the first channel. */
std::vector<std::int16_t> TalkRecorder::decode(const VoicePacket& packet)
{
    const int count = packet.channels;
    if (!m_decoder || m_streamType != packet.streamType) {
        m_streamType = packet.streamType;
        StreamParameters parameters;
        parameters.streamType = packet.streamType;
        parameters.sampleRate = static_cast<std::uint32_t>(packet.sampleRate);
        parameters.channels = static_cast<std::uint8_t>(count);
        m_decoder = std::make_unique<PacketStream>(parameters);
        m_converter = std::make_unique<PcmConverter>(SampleFormat::S16, packet.sampleRate, count, sampleRate);
    }
    std::vector<std::int16_t> samples;
    const auto decoded = m_decoder->decode(packet.bitstream);
    if (decoded && m_converter->valid()) {
        m_converter->convert(decoded->data(), decoded->size() / static_cast<std::size_t>(count), samples);
    }
    return samples;
}

bool TalkRecorder::flush(std::int64_t time)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return writeUntil((time - m_start) * sampleRate / microsecondsPerSecond - heldBack);
}

bool TalkRecorder::writeUntil(std::int64_t end)
{
    if (end <= m_written) {
        return true;
    }
    const auto count = static_cast<std::size_t>(end - m_written);
    m_said.samples.resize(std::max(m_said.samples.size(), count));
    m_heard.samples.resize(std::max(m_heard.samples.size(), count));
    std::vector<std::int16_t> frames;
    frames.reserve(count * channels);
    for (std::size_t i = 0; i < count; ++i) {
        frames.push_back(m_said.samples[i]);
        frames.push_back(m_heard.samples[i]);
    }
    for (Side* side : {&m_said, &m_heard}) {
        side->samples.erase(side->samples.begin(),
                            side->samples.begin() + static_cast<std::ptrdiff_t>(count));
    }
    m_written = end;
    m_reached = std::max(m_reached, end);
    return m_file.write(frames);
}
