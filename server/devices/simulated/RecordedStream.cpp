#include "server/devices/simulated/RecordedStream.h"

#include "audio/PacketDump.h"

#include <algorithm>

namespace {

constexpr int g7221FrameOf24000 = 60; // bytes
constexpr int g7221FrameOf32000 = 80;
constexpr int g7221Samples = 320;
constexpr int g729SpeechFrame = 11; // with its type byte
constexpr int g729SidFrame = 3;
constexpr int g729Samples = 80;
constexpr int g726SamplesPerByte = 2; // at 32 kbit/s

RecordedPacket makePacket(const QByteArray& bitstream, int frames, int samples)
{
    return {bitstream, static_cast<unsigned>(std::max(frames, 1)), static_cast<std::uint32_t>(samples)};
}

RecordedPacket describeG7221(const QByteArray& bitstream)
{
    const int size = bitstream.size();
    const int frames =
        std::max(size % g7221FrameOf32000 == 0 ? size / g7221FrameOf32000 : size / g7221FrameOf24000, 1);
    return makePacket(bitstream, frames, frames * g7221Samples);
}

/** Each frame starts with a byte that tells its type, and so its length. */
RecordedPacket describeG729A(const QByteArray& bitstream)
{
    int frames = 0;
    for (int at = 0; at < bitstream.size(); ++frames) {
        const char type = bitstream[at];
        at += type == 1 || type == 4 ? g729SpeechFrame : type == 2 || type == 5 ? g729SidFrame : 1;
    }
    // The number that is told gives decoders their limit for one frame: a short one must not lower it.
    return makePacket(bitstream, bitstream.size() / g729SpeechFrame, frames * g729Samples);
}

RecordedPacket describe(const QByteArray& bitstream, TalkCodec codec)
{
    switch (codec) {
    case TalkCodec::G7221:
        return describeG7221(bitstream);
    case TalkCodec::G729A:
        return describeG729A(bitstream);
    default:
        return makePacket(bitstream, 1, bitstream.size() * g726SamplesPerByte);
    }
}

} // namespace

TalkFormat recordedFormat(TalkCodec codec)
{
    switch (codec) {
    case TalkCodec::G7221:
        return {256, 16000, g7221Samples};
    case TalkCodec::G729A:
        return {512, 8000, g729Samples};
    default:
        return {32768, 8000, 0};
    }
}

std::vector<RecordedPacket> readRecordedStream(const QString& path, TalkCodec codec)
{
    std::vector<RecordedPacket> stream;
    QString error;
    const auto dump = PacketDump::read(path, &error);
    if (dump) {
        std::transform(dump->packets.begin(), dump->packets.end(), std::back_inserter(stream),
                       [codec](const QByteArray& packet) { return describe(packet, codec); });
    }
    return stream;
}
