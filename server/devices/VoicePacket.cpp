#include "server/devices/VoicePacket.h"

#include "audio/PacketHeader.h"
#include "protocol/CborWriter.h"
#include "protocol/VariantCbor.h"
#include "protocol/Words.h"
#include "src/Base64.h"

namespace {

/** The header of a packet. */
PacketHeader headerOf(const VoicePacket& packet)
{
    PacketHeader header;
    header.channels = static_cast<std::uint8_t>(packet.channels);
    header.streamType = packet.streamType;
    header.sampleRate = static_cast<std::uint32_t>(packet.sampleRate);
    header.position = packet.position;
    header.captureTime = packet.captureTime;
    // Filled up so that the packet's Base64 text needs no padding: a client does not decode every padded
    // text.
    const int rest = (static_cast<int>(PacketHeader::size) + packet.bitstream.size()) % 3;
    const int padding = (3 - rest) % 3;
    header.length = static_cast<std::uint8_t>(PacketHeader::size) + static_cast<std::uint8_t>(padding);
    return header;
}

/** The whole packet; its length is a multiple of three. */
QByteArray bytesOf(const VoicePacket& packet, const PacketHeader& header)
{
    const auto fields = header.toBytes();
    QByteArray bytes;
    bytes.reserve(header.length + packet.bitstream.size());
    bytes.append(reinterpret_cast<const char*>(fields.data()), static_cast<int>(fields.size()));
    bytes.append(header.length - bytes.size(), '\0');
    bytes.append(packet.bitstream);
    return bytes;
}

/** Writes bytes as Base64. @param text room for 4 characters for 3 bytes; the bytes are a multiple of 3 */
void writeBase64(const QByteArray& bytes, char* text)
{
    const auto size = static_cast<unsigned>(bytes.size());
    Base64Encode(reinterpret_cast<const unsigned char*>(bytes.constData()), size, text,
                 Base64EncodeCapacity(size));
}

} // namespace

QVariantMap VoicePacket::toFields() const
{
    const PacketHeader header = headerOf(*this);
    const QByteArray bytes = bytesOf(*this, header);
    QByteArray text(bytes.size() / 3 * 4, Qt::Uninitialized);
    writeBase64(bytes, text.data());
    return {
        {Words::BitstreamSize, static_cast<uint>(bitstream.size())},
        {Words::Offset, static_cast<uint>(header.length)},
        {Words::AudioData, QString::fromLatin1(text)},
        {Words::StreamType, streamType},
        {Words::AudioSamplingFreq, static_cast<uint>(sampleRate)},
        {Words::AudioChannelNum, static_cast<uint>(channels)},
        {Words::FrameNumber, frames},
    };
}

QByteArray VoicePacket::toPayload(const QString& token) const
{
    constexpr int room = 256; // bytes of all but the packet's text, for a token that is one of ours
    constexpr int fields = 8;
    const PacketHeader header = headerOf(*this);
    const QByteArray bytes = bytesOf(*this, header);
    const int characters = bytes.size() / 3 * 4;
    QByteArray payload;
    payload.reserve(room + characters);
    CborWriter writer(payload);
    const auto number = [&](const QString& key, uint value) {
        writer.text(key);
        VariantCbor::encode(value, writer);
    };
    writer.map(1);
    writer.text(Vocabulary::AudioReceived);
    writer.map(fields); // in the order of a QVariantMap
    number(Words::AudioChannelNum, static_cast<uint>(channels));
    writer.text(Words::AudioData);
    writeBase64(bytes, writer.asciiText(characters));
    number(Words::AudioSamplingFreq, static_cast<uint>(sampleRate));
    number(Words::BitstreamSize, static_cast<uint>(bitstream.size()));
    number(Words::FrameNumber, frames);
    number(Words::Offset, header.length);
    number(Words::StreamType, streamType);
    writer.text(Words::Token);
    writer.text(token);
    return payload;
}
