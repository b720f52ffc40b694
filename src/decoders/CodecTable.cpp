#include "src/decoders/CodecTable.h"

#include "platform/MediaDataPacketInfo.h"
#include "src/decoders/DecoderFactories.h"
#include "src/vocabulary/StreamType.h"

namespace {

using Packet = TMediaDataPacketInfo;

constexpr std::uint32_t msPerSecond = 1000;
constexpr std::uint32_t bitsTimesMs = 8 * msPerSecond;

DecoderContext* createMuLaw(const Packet& packet)
{
    return CreateDecoder_MuLaw(packet.AudioSamplingFreq, packet.AudioChannelNum);
}

DecoderContext* createALaw(const Packet& packet)
{
    return CreateDecoder_ALaw(packet.AudioSamplingFreq, packet.AudioChannelNum);
}

DecoderContext* createAac(const Packet& packet)
{
    return CreateDecoder_AAC(packet.AudioSamplingFreq, packet.AudioChannelNum);
}

DecoderContext* createAmr(const Packet& /*packet*/)
{
    return CreateDecoder_AMR();
}

DecoderContext* createG726(const Packet& packet)
{
    return packet.AudioPackingMode != 0 ? CreateDecoderG726Left(packet.AudioBitRate)
                                        : CreateDecoderG726Right(packet.AudioBitRate);
}

DecoderContext* createG7221(const Packet& /*packet*/)
{
    return CreateDecoderSorvixG7221();
}

DecoderContext* createG729A(const Packet& /*packet*/)
{
    return CreateDecoderSorvixG729A();
}

// Type, name, rate, channels, fixed format; samples and bytes of a frame; bit rate; timing; decoder.
// fuzz/CMakeLists.txt reads the names: a row starts on a line of its own.
// clang-format off
constexpr Codec rows[] = {
    {StreamType::G711MuLaw, "pcmu", 8000, 1, false, 0, 0, 64000, Codec::BySize, createMuLaw},
    {StreamType::G711ALaw, "pcma", 8000, 1, false, 0, 0, 64000, Codec::BySize, createALaw},
    {StreamType::Aac, "aac", 16000, 1, false, 1024, 0, 0, Codec::ByRate, createAac},
    {StreamType::AmrNb, "amr", 8000, 1, true, 160, 32, 0, Codec::ByFrameCount, createAmr},
    {StreamType::G726, "g726", 8000, 1, true, 0, 0, 32000, Codec::ByBitRate, createG726},
    {StreamType::G7221, "g7221", 16000, 1, true, 320, 80, 0, Codec::ByFrameCount, createG7221},
    {StreamType::G729A, "g729a", 8000, 1, true, 80, 11, 0, Codec::ByFrameCount, createG729A},
    // Nothing is known of it but that a frame lasts 20 ms.
    {StreamType::Undecoded, nullptr, 8000, 1, true, 160, 0, 0, Codec::ByFrameCount, nullptr},
};
// clang-format on

} // namespace

constexpr CodecRows codecTable(rows);

std::uint32_t Codec::packetTime(const TMediaDataPacketInfo& packet) const
{
    switch (timing) {
    case ByFrameCount:
        return packet.FrameNumber * (frameSamples * msPerSecond / rate);
    case ByRate:
        return packet.AudioSamplingFreq == 0 ? 0 : frameSamples * msPerSecond / packet.AudioSamplingFreq;
    case BySize:
        return packet.BitstreamSize * bitsTimesMs / bitRate;
    case ByBitRate:
        return packet.AudioBitRate == 0 ? 0 : packet.BitstreamSize * bitsTimesMs / packet.AudioBitRate;
    }
    return 0;
}

const Codec* Codec::byType(std::uint32_t streamType)
{
    for (const Codec& codec : codecTable) {
        if (codec.streamType == streamType) {
            return &codec;
        }
    }
    return nullptr;
}

const Codec* Codec::byName(std::string_view name)
{
    for (const Codec& codec : codecTable) {
        if (codec.name != nullptr && codec.name == name) {
            return &codec;
        }
    }
    return nullptr;
}
