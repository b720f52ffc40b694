#include "audio/TalkPacketDecoder.h"

#include "audio/G711.h"
#include "audio/PacketHeader.h"
#include "src/vocabulary/StreamType.h"

namespace {

constexpr int maxBitstreamSize = 16384; // bytes; two seconds of sound

} // namespace

std::optional<TalkBitstream> TalkPacketDecoder::bitstreamOf(const QByteArray& packet)
{
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(packet.constData());
    const auto header = PacketHeader::fromBytes(bytes, static_cast<std::size_t>(packet.size()));
    if (!header || header->streamType != StreamType::G711MuLaw || header->channels != 1 ||
        header->sampleRate != sampleRate || packet.size() - header->length > maxBitstreamSize) {
        return std::nullopt;
    }
    return TalkBitstream{header->position, header->captureTime, packet.mid(header->length)};
}

std::optional<DecodedTalk> TalkPacketDecoder::decode(const QByteArray& packet)
{
    const auto bitstream = bitstreamOf(packet);
    if (!bitstream) {
        return std::nullopt;
    }
    return DecodedTalk{bitstream->position, bitstream->captureTime, G711::decodeMuLaw(bitstream->muLaw)};
}
