// Base64Encode, Base64Decode and Base64DecodeStrict against QByteArray's toBase64 and fromBase64, in the same
// run. Ours write to a buffer of the caller's; Qt's allocate one.

#include "src/Base64.h"

#include <QByteArray>

#include <benchmark/benchmark.h>

#include <vector>

namespace {

QByteArray packetOf(std::int64_t size)
{
    QByteArray packet(static_cast<int>(size), 0);
    for (int i = 0; i < packet.size(); ++i) {
        packet[i] = static_cast<char>(i * 151 + 7);
    }
    return packet;
}

void ownEncode(benchmark::State& state)
{
    const QByteArray packet = packetOf(state.range(0));
    const auto size = static_cast<unsigned>(packet.size());
    std::vector<char> text(Base64EncodeCapacity(size) + 1);
    for (auto _ : state) {
        benchmark::DoNotOptimize(Base64Encode(reinterpret_cast<const unsigned char*>(packet.constData()),
                                              size, text.data(), Base64EncodeCapacity(size)));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void qtEncode(benchmark::State& state)
{
    const QByteArray packet = packetOf(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(packet.toBase64());
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void ownDecode(benchmark::State& state)
{
    const QByteArray text = packetOf(state.range(0)).toBase64();
    std::vector<unsigned char> bytes(static_cast<std::size_t>(state.range(0)) + 3);
    for (auto _ : state) {
        benchmark::DoNotOptimize(Base64Decode(text.constData(), static_cast<unsigned>(text.size()),
                                              bytes.data(), static_cast<unsigned>(bytes.size())));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void ownDecodeStrict(benchmark::State& state)
{
    const QByteArray text = packetOf(state.range(0)).toBase64();
    std::vector<unsigned char> bytes(static_cast<std::size_t>(state.range(0)) + 3);
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            Base64DecodeStrict(text.constData(), static_cast<unsigned>(text.size()), bytes.data()));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void qtDecode(benchmark::State& state)
{
    const QByteArray text = packetOf(state.range(0)).toBase64();
    for (auto _ : state) {
        benchmark::DoNotOptimize(QByteArray::fromBase64(text));
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

} // namespace

BENCHMARK(ownEncode)->Arg(20)->Arg(660)->Arg(10000);
BENCHMARK(qtEncode)->Arg(20)->Arg(660)->Arg(10000);
BENCHMARK(ownDecode)->Arg(20)->Arg(660)->Arg(10000);
BENCHMARK(ownDecodeStrict)->Arg(20)->Arg(660)->Arg(10000);
BENCHMARK(qtDecode)->Arg(20)->Arg(660)->Arg(10000);

BENCHMARK_MAIN();
