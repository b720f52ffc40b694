#include "server/devices/VoicePacket.h"

#include "audio/PacketHeader.h"
#include "protocol/Words.h"

QVariantMap VoicePacket::toFields() const
{
    PacketHeader header;
    header.channels = static_cast<std::uint8_t>(channels);
    header.streamType = streamType;
    header.sampleRate = static_cast<std::uint32_t>(sampleRate);
    header.position = position;
    header.captureTime = captureTime;
    // Filled up so that the packet's Base64 text needs no padding: a client does not decode every padded
    // text.
    const int rest = (static_cast<int>(PacketHeader::size) + bitstream.size()) % 3;
    const int padding = (3 - rest) % 3;
    header.length = static_cast<std::uint8_t>(PacketHeader::size) + static_cast<std::uint8_t>(padding);
    const auto bytes = header.toBytes();
    const QByteArray packet =
        QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size())) +
        QByteArray(padding, '\0') + bitstream;
    return {
        {Words::BitstreamSize, static_cast<uint>(bitstream.size())},
        {Words::Offset, static_cast<uint>(header.length)},
        {Words::AudioData, QString::fromLatin1(packet.toBase64())},
        {Words::StreamType, streamType},
        {Words::AudioSamplingFreq, static_cast<uint>(sampleRate)},
        {Words::AudioChannelNum, static_cast<uint>(channels)},
        {Words::FrameNumber, frames},
    };
}
