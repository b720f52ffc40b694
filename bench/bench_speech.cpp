// The speech decoders. G.726 against libavcodec's in the same run, both packings; G.722.1 in times real time;
// G.729A against libbcg729's and libavcodec's on the same speech, and on noise.

#include "bench/AllocationCounter.h"
#include "src/decoders/DecoderContext.h"
#include "src/decoders/DecoderFactories.h"
#include "src/decoders/PcmBlock.h"

#include <QByteArray>
#include <QFile>

#include <benchmark/benchmark.h>

#include <vector>

extern "C" {
#include <bcg729/decoder.h>
#include <libavcodec/avcodec.h>
#include <libavutil/channel_layout.h>
}

namespace {

constexpr int packetSamples = 160; // 20 ms

/** Codewords; any bytes are some. */
QByteArray codewords(int bytes)
{
    QByteArray made;
    std::uint32_t value = 1;
    for (int i = 0; i < bytes; ++i) {
        value = value * 1664525U + 1013904223U;
        made.append(static_cast<char>(value >> 24U));
    }
    return made;
}

void setSamples(benchmark::State& state, int samplesEach)
{
    state.SetItemsProcessed(state.iterations() * samplesEach);
}

void ownG726(benchmark::State& state)
{
    const auto rate = static_cast<std::uint32_t>(state.range(0));
    DecoderContext* decoder =
        state.range(1) != 0 ? CreateDecoderG726Left(rate) : CreateDecoderG726Right(rate);
    const QByteArray packet = codewords(static_cast<int>(rate) / 8000 * packetSamples / 8);
    const EncodedChunk chunk{reinterpret_cast<const std::uint8_t*>(packet.constData()),
                             static_cast<std::uint32_t>(packet.size()), 1};
    std::vector<std::uint8_t> pcm(pcmBlockSize);
    const auto mallocs = AllocationCounter::mallocs();
    for (auto _ : state) {
        std::uint32_t size = pcmBlockSize;
        benchmark::DoNotOptimize(decoder->DecodeAudio(pcm.data(), &size, &chunk));
    }
    state.counters["mallocs"] = static_cast<double>(AllocationCounter::mallocs() - mallocs);
    setSamples(state, packetSamples);
    decoder->Release();
}

void avcodecG726(benchmark::State& state)
{
    const AVCodec* codec =
        avcodec_find_decoder(state.range(1) != 0 ? AV_CODEC_ID_ADPCM_G726 : AV_CODEC_ID_ADPCM_G726LE);
    AVCodecContext* context = avcodec_alloc_context3(codec);
    context->sample_rate = 8000;
    context->bits_per_coded_sample = static_cast<int>(state.range(0)) / 8000;
    av_channel_layout_default(&context->ch_layout, 1);
    if (avcodec_open2(context, codec, nullptr) < 0) {
        state.SkipWithError("libavcodec has no G.726");
        return;
    }
    const QByteArray bytes = codewords(static_cast<int>(state.range(0)) / 8000 * packetSamples / 8);
    AVPacket* packet = av_packet_alloc();
    av_new_packet(packet, bytes.size());
    std::copy(bytes.begin(), bytes.end(), packet->data);
    AVFrame* frame = av_frame_alloc();
    for (auto _ : state) {
        avcodec_send_packet(context, packet);
        benchmark::DoNotOptimize(avcodec_receive_frame(context, frame));
    }
    setSamples(state, packetSamples);
    av_frame_free(&frame);
    av_packet_free(&packet);
    avcodec_free_context(&context);
}

void ownG7221(benchmark::State& state)
{
    QFile file(QStringLiteral(BENCH_DATA_DIR "/g7221/speech5_24000.g7221"));
    if (!file.open(QIODevice::ReadOnly)) {
        state.SkipWithError("no speech");
        return;
    }
    const QByteArray frames = file.readAll();
    DecoderContext* decoder = CreateDecoderSorvixG7221();
    std::vector<std::uint8_t> pcm(pcmBlockSize);
    int at = 0;
    const auto mallocs = AllocationCounter::mallocs();
    for (auto _ : state) {
        const EncodedChunk chunk{reinterpret_cast<const std::uint8_t*>(frames.constData()) + at, 60, 1};
        std::uint32_t size = pcmBlockSize;
        benchmark::DoNotOptimize(decoder->DecodeAudio(pcm.data(), &size, &chunk));
        at = (at + 60) % frames.size();
    }
    state.counters["mallocs"] = static_cast<double>(AllocationCounter::mallocs() - mallocs);
    state.counters["times real time"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * 0.02, benchmark::Counter::kIsRate);
    decoder->Release();
}

constexpr int g729SpeechBytes = 11; // with the byte that tells the type
constexpr int g729FrameSamples = 80;

/** Frames of one length, round and round. */
class Frames
{
public:
    Frames(QByteArray bytes, int length) : m_bytes(std::move(bytes)), m_length(length) {}

    const std::uint8_t* next()
    {
        const char* frame = m_bytes.constData() + m_at;
        m_at = (m_at + m_length) % m_bytes.size();
        return reinterpret_cast<const std::uint8_t*>(frame);
    }

private:
    QByteArray m_bytes;
    int m_length;
    int m_at = 0;
};

Frames g729Speech()
{
    QFile file(QStringLiteral(BENCH_DATA_DIR "/g729a/speech1_dtx0.g729f"));
    file.open(QIODevice::ReadOnly);
    return {file.readAll(), g729SpeechBytes};
}

void decodeG729A(benchmark::State& state, Frames frames, std::uint32_t frameBytes)
{
    DecoderContext* decoder = CreateDecoderSorvixG729A();
    std::vector<std::uint8_t> pcm(pcmBlockSize);
    const auto mallocs = AllocationCounter::mallocs();
    for (auto _ : state) {
        const EncodedChunk chunk{frames.next(), frameBytes, 1};
        std::uint32_t size = pcmBlockSize;
        benchmark::DoNotOptimize(decoder->DecodeAudio(pcm.data(), &size, &chunk));
    }
    state.counters["mallocs"] = static_cast<double>(AllocationCounter::mallocs() - mallocs);
    setSamples(state, g729FrameSamples);
    decoder->Release();
}

void ownG729ASpeech(benchmark::State& state)
{
    decodeG729A(state, g729Speech(), g729SpeechBytes);
}

void bcg729Speech(benchmark::State& state)
{
    auto* decoder = initBcg729DecoderChannel();
    Frames frames = g729Speech();
    std::int16_t pcm[g729FrameSamples];
    for (auto _ : state) {
        bcg729Decoder(decoder, frames.next() + 1, g729SpeechBytes - 1, 0, 0, 0, pcm);
        benchmark::DoNotOptimize(pcm);
    }
    setSamples(state, g729FrameSamples);
    closeBcg729DecoderChannel(decoder);
}

void avcodecG729Speech(benchmark::State& state)
{
    const AVCodec* codec = avcodec_find_decoder(AV_CODEC_ID_G729);
    AVCodecContext* context = avcodec_alloc_context3(codec);
    context->sample_rate = 8000;
    av_channel_layout_default(&context->ch_layout, 1);
    if (avcodec_open2(context, codec, nullptr) < 0) {
        state.SkipWithError("libavcodec has no G.729");
        return;
    }
    Frames frames = g729Speech();
    AVPacket* packet = av_packet_alloc();
    av_new_packet(packet, g729SpeechBytes - 1);
    AVFrame* frame = av_frame_alloc();
    for (auto _ : state) {
        std::copy_n(frames.next() + 1, packet->size, packet->data);
        avcodec_send_packet(context, packet);
        benchmark::DoNotOptimize(avcodec_receive_frame(context, frame));
    }
    setSamples(state, g729FrameSamples);
    av_frame_free(&frame);
    av_packet_free(&packet);
    avcodec_free_context(&context);
}

// A SID frame each time: every frame of noise costs the same, and this one its filter besides.
const char sidFrame[] = "\x02\x4A\x96";
constexpr int sidBytes = 3;

void ownG729ANoise(benchmark::State& state)
{
    decodeG729A(state, {QByteArray(sidFrame, sidBytes), sidBytes}, sidBytes);
}

void bcg729Noise(benchmark::State& state)
{
    auto* decoder = initBcg729DecoderChannel();
    Frames frames({sidFrame, sidBytes}, sidBytes);
    std::int16_t pcm[g729FrameSamples];
    for (auto _ : state) {
        bcg729Decoder(decoder, frames.next() + 1, sidBytes - 1, 0, 1, 0, pcm);
        benchmark::DoNotOptimize(pcm);
    }
    setSamples(state, g729FrameSamples);
    closeBcg729DecoderChannel(decoder);
}

} // namespace

BENCHMARK(ownG726)->ArgsProduct({{16000, 24000, 32000, 40000}, {1, 0}});
BENCHMARK(avcodecG726)->ArgsProduct({{16000, 24000, 32000, 40000}, {1, 0}});
BENCHMARK(ownG7221);
BENCHMARK(ownG729ASpeech);
BENCHMARK(bcg729Speech);
BENCHMARK(avcodecG729Speech);
BENCHMARK(ownG729ANoise);
BENCHMARK(bcg729Noise); // libavcodec knows no comfort noise

BENCHMARK_MAIN();
