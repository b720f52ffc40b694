#include "standins/framesmith/PacketMaker.h"

#include "audio/PacketHeader.h"
#include "platform/MediaDataPacketInfo.h"
#include "src/vocabulary/StreamType.h"

#include <algorithm>
#include <chrono>

namespace framesmith {

namespace {

constexpr std::uint32_t sampleRate = 8000; // Hz
constexpr std::uint8_t channels = 1;

std::uint64_t steadyMicroseconds()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(now).count());
}

} // namespace

std::size_t PacketMaker::packetSize(std::size_t samples)
{
    return PacketHeader::size + samples;
}

bool PacketMaker::make(const std::int16_t* samples, std::size_t count, TMediaDataPacketInfo& record)
{
    if (!m_encoder.encode(samples, count, record.Buffer + PacketHeader::size)) {
        return false;
    }
    PacketHeader header;
    header.channels = channels;
    header.streamType = StreamType::G711MuLaw;
    header.sampleRate = sampleRate;
    header.position = m_position;
    header.captureTime = steadyMicroseconds();
    const auto bytes = header.toBytes();
    std::copy(bytes.begin(), bytes.end(), record.Buffer);
    m_position += static_cast<std::uint32_t>(count);

    record.Offset = PacketHeader::size;
    record.BitstreamSize = static_cast<std::uint32_t>(count);
    record.StreamType = StreamType::G711MuLaw;
    record.FrameNumber = 1;
    record.AudioSamplingFreq = sampleRate;
    record.AudioChannelNum = channels;
    return true;
}

} // namespace framesmith
