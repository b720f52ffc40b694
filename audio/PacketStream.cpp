#include "audio/PacketStream.h"

#include "src/MediaPacket.h"
#include "src/decoders/PcmBlock.h"

PacketStream::PacketStream(const StreamParameters& parameters)
    : m_parameters(parameters), m_block(pcmBlockSize / sizeof(std::int16_t))
{
}

std::optional<std::vector<std::int16_t>> PacketStream::decode(const QByteArray& packet)
{
    TMediaDataPacketInfo record{};
    record.StreamType = m_parameters.streamType;
    record.AudioSamplingFreq = m_parameters.sampleRate;
    record.AudioChannelNum = m_parameters.channels;
    record.AudioBitRate = m_parameters.bitRate;
    record.AudioPackingMode = m_parameters.packingMode;
    record.FrameNumber = m_parameters.frameNumber;
    record.BitstreamSize = static_cast<std::uint32_t>(packet.size());
    record.Buffer = reinterpret_cast<std::uint8_t*>(const_cast<char*>(packet.constData()));
    const MediaPacketPtr media = makeMediaPacket(record);
    if (!media) {
        return std::nullopt;
    }
    std::uint32_t size = pcmBlockSize;
    if (m_decoder.Decode(reinterpret_cast<std::uint8_t*>(m_block.data()), &size, *media) < 0) {
        return std::nullopt;
    }
    const auto samples = static_cast<std::ptrdiff_t>(size / sizeof(std::int16_t));
    return std::vector<std::int16_t>(m_block.begin(), m_block.begin() + samples);
}
