#include "audio/TalkEncoder.h"

#include "audio/AmrTalkEncoder.h"
#include "audio/AvTalkEncoder.h"
#include "src/decoders/CodecTable.h"
#include "src/vocabulary/StreamType.h"

extern "C" {
#include <libavcodec/codec_id.h>
}

#include <array>

namespace {

constexpr std::uint32_t packetSamples = 640; // of a codec without frames; 80 ms at 8000 Hz

template<int codecId>
std::unique_ptr<TalkEncoder> createAv(const TalkFormat& format)
{
    auto encoder = std::make_unique<AvTalkEncoder>(codecId, format);
    return encoder->valid() ? std::move(encoder) : nullptr;
}

std::unique_ptr<TalkEncoder> createAmr(const TalkFormat& format)
{
    auto encoder = std::make_unique<AmrTalkEncoder>(format);
    return encoder->valid() ? std::move(encoder) : nullptr;
}

/** The encoder of a row of the codec table. */
struct Encoder
{
    std::uint32_t streamType;
    std::unique_ptr<TalkEncoder> (*create)(const TalkFormat& format);
};

// Codecs of the codec table that are not named here have no encoder.
constexpr std::array<Encoder, 4> encoders{{
    {StreamType::G711MuLaw, createAv<AV_CODEC_ID_PCM_MULAW>},
    {StreamType::G711ALaw, createAv<AV_CODEC_ID_PCM_ALAW>},
    {StreamType::Aac, createAv<AV_CODEC_ID_AAC>},
    {StreamType::AmrNb, createAmr},
}};

const Encoder* encoderOf(const Codec& codec)
{
    for (const Encoder& encoder : encoders) {
        if (encoder.streamType == codec.streamType) {
            return &encoder;
        }
    }
    return nullptr;
}

} // namespace

TalkFormat::TalkFormat(const Codec& codec)
    : streamType(codec.streamType), sampleRate(static_cast<int>(codec.rate)),
      frameSamples(static_cast<int>(codec.frameSamples != 0 ? codec.frameSamples : packetSamples))
{
}

bool TalkEncoder::existsFor(const Codec& codec)
{
    return encoderOf(codec) != nullptr;
}

std::unique_ptr<TalkEncoder> TalkEncoder::create(const Codec& codec)
{
    const Encoder* encoder = encoderOf(codec);
    return encoder != nullptr ? encoder->create(TalkFormat(codec)) : nullptr;
}
