#include "src/decoders/DecoderFactories.h"

#include "src/decoders/DecoderIsolated_FFmpeg.h"

extern "C" {
#include <libavcodec/codec_id.h>
}

namespace {

constexpr std::uint32_t amrSampleRate = 8000; // Hz
constexpr std::uint32_t amrChannels = 1;
constexpr int noCodedSampleSize = 0;

} // namespace

DecoderContext* CreateDecoder_AAC(std::uint32_t sampleRate, std::uint32_t channels)
{
    return CreateDecoderFFmpeg(AV_CODEC_ID_AAC, sampleRate, channels, noCodedSampleSize);
}

DecoderContext* CreateDecoder_AMR()
{
    return CreateDecoderFFmpeg(AV_CODEC_ID_AMR_NB, amrSampleRate, amrChannels, noCodedSampleSize);
}

DecoderContext* CreateDecoder_MuLaw(std::uint32_t sampleRate, std::uint32_t channels)
{
    return CreateDecoderFFmpeg(AV_CODEC_ID_PCM_MULAW, sampleRate, channels, noCodedSampleSize);
}

DecoderContext* CreateDecoder_ALaw(std::uint32_t sampleRate, std::uint32_t channels)
{
    return CreateDecoderFFmpeg(AV_CODEC_ID_PCM_ALAW, sampleRate, channels, noCodedSampleSize);
}
