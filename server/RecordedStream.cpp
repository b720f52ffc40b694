#include "RecordedStream.h"

#include <PacketDump.h>

#include <algorithm>

namespace {

constexpr int g7221FrameOf24000 = 60; // bytes
constexpr int g7221FrameOf32000 = 80;
constexpr int g7221Samples = 320;
constexpr int g729SpeechFrame = 11; // with its type byte
constexpr int g729Samples = 80;
constexpr int g726SamplesPerByte = 2; // at 32 kbit/s

RecordedPacket describe(const QByteArray& bitstream, TalkCodec codec)
{
    const int size = bitstream.size();
    if (codec == TalkCodec::G726) {
        return {bitstream, 1, static_cast<std::uint32_t>(size * g726SamplesPerByte)};
    }
    int frames = 1;
    if (codec == TalkCodec::G7221) {
        frames = size % g7221FrameOf32000 == 0 ? size / g7221FrameOf32000 : size / g7221FrameOf24000;
    } else {
        frames = size / g729SpeechFrame;
    }
    frames = std::max(frames, 1);
    const int samples = codec == TalkCodec::G7221 ? g7221Samples : g729Samples;
    return {bitstream, static_cast<unsigned>(frames), static_cast<std::uint32_t>(frames * samples)};
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
