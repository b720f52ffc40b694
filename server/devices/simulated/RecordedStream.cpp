#include "server/devices/simulated/RecordedStream.h"

#include "audio/PacketDump.h"
#include "src/decoders/CodecTable.h"
#include "src/vocabulary/StreamType.h"

#include <algorithm>

namespace {

constexpr int g7221FrameOf24000 = 60; // bytes
constexpr int g729SidFrame = 3;       // bytes, with its type byte

/** Frames of one size, or of two for G.722.1. */
int framesIn(const QByteArray& bitstream, const Codec& codec)
{
    const int size = bitstream.size();
    int frameBytes = static_cast<int>(codec.frameBytes);
    if (codec.streamType == StreamType::G7221 && size % frameBytes != 0) {
        frameBytes = g7221FrameOf24000;
    }
    return frameBytes != 0 ? std::max(size / frameBytes, 1) : 1;
}

/** Frames that each start with a byte that gives their type, and so their length. */
int framesOfG729A(const QByteArray& bitstream, const Codec& codec)
{
    const auto speechFrame = static_cast<int>(codec.frameBytes);
    int frames = 0;
    for (int at = 0; at < bitstream.size(); ++frames) {
        const char type = bitstream[at];
        at += type == 1 || type == 4 ? speechFrame : type == 2 || type == 5 ? g729SidFrame : 1;
    }
    return frames;
}

RecordedPacket describe(const QByteArray& bitstream, const Codec& codec)
{
    RecordedPacket packet;
    packet.bitstream = bitstream;
    if (codec.frameSamples == 0) {
        packet.samples =
            static_cast<std::uint32_t>(std::int64_t{bitstream.size()} * 8 * codec.rate / codec.bitRate);
        return packet;
    }
    // The number in the packet is the limit of decoders for one frame of G.729A: a short one must not lower
    // it.
    packet.frames = static_cast<unsigned>(framesIn(bitstream, codec));
    const int sounding =
        codec.streamType == StreamType::G729A ? framesOfG729A(bitstream, codec) : framesIn(bitstream, codec);
    packet.samples = static_cast<std::uint32_t>(sounding) * codec.frameSamples;
    return packet;
}

} // namespace

std::vector<RecordedPacket> readRecordedStream(const QString& path, const Codec& codec)
{
    std::vector<RecordedPacket> stream;
    QString error;
    const auto dump = PacketDump::read(path, &error);
    if (dump) {
        std::transform(dump->packets.begin(), dump->packets.end(), std::back_inserter(stream),
                       [&codec](const QByteArray& packet) { return describe(packet, codec); });
    }
    return stream;
}
