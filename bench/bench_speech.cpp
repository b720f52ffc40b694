// The speech decoders. G.726 against libavcodec's in the same run, both packings; G.722.1 in times real time.

#include "AllocationCounter.h"
#include "DecoderContext.h"
#include "DecoderFactories.h"
#include "SwrConverter.h"

#include <QByteArray>
#include <QFile>

#include <benchmark/benchmark.h>

#include <vector>

extern "C" {
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

} // namespace

BENCHMARK(ownG726)->ArgsProduct({{16000, 24000, 32000, 40000}, {1, 0}});
BENCHMARK(avcodecG726)->ArgsProduct({{16000, 24000, 32000, 40000}, {1, 0}});
BENCHMARK(ownG7221);

BENCHMARK_MAIN();
