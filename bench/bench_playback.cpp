// The output thread's work: readData for 10 ms of output, by codec and output format. The real time per
// iteration over 10 ms is the share of the thread that playback takes.

#include "audio/PacketDump.h"
#include "bench/AllocationCounter.h"
#include "src/playback/AudioDevice.h"
#include "src/vocabulary/StreamType.h"

#include <benchmark/benchmark.h>

#include <cmath>

namespace {

struct Device : AudioDevice
{
    using AudioDevice::AudioDevice;
    using AudioDevice::readData;
};

struct Stream
{
    std::uint32_t streamType;
    std::uint32_t rate;
    std::vector<QByteArray> packets;
};

MediaPacketPtr mediaPacket(const Stream& stream, const QByteArray& bitstream)
{
    TMediaDataPacketInfo record{};
    record.StreamType = stream.streamType;
    record.AudioSamplingFreq = stream.rate;
    record.AudioChannelNum = 1;
    record.FrameNumber = 1;
    record.BitstreamSize = static_cast<std::uint32_t>(bitstream.size());
    record.Buffer = reinterpret_cast<std::uint8_t*>(const_cast<char*>(bitstream.constData()));
    return makeMediaPacket(record);
}

std::vector<QByteArray> recorded(const char* name)
{
    QString error;
    const auto dump = PacketDump::read(QStringLiteral(BENCH_DATA_DIR "/") + QLatin1String(name), &error);
    return dump ? dump->packets : std::vector<QByteArray>();
}

std::vector<QByteArray> g711Packets()
{
    std::vector<QByteArray> packets;
    for (int packet = 0; packet < 16; ++packet) {
        QByteArray bytes(640, 0);
        for (int i = 0; i < bytes.size(); ++i) {
            bytes[i] = static_cast<char>((i * 37 + packet * 11) & 0xFF);
        }
        packets.push_back(bytes);
    }
    return packets;
}

void readTenMilliseconds(benchmark::State& state, const Stream& stream, int format, int rate, int channels)
{
    std::vector<MediaPacketPtr> packets;
    for (const QByteArray& bitstream : stream.packets) {
        packets.push_back(mediaPacket(stream, bitstream));
    }
    if (packets.empty()) {
        state.SkipWithError("no packets");
        return;
    }
    SwrConverter converter;
    if (converter.Setup(format, rate, channels, 1, static_cast<int>(stream.rate), 1) < 0) {
        state.SkipWithError("no conversion");
        return;
    }
    Device device(std::move(converter), packets[0].get());
    const int bytes = rate / 100 * channels * (format == 3 ? 4 : 2);
    std::vector<char> pcm(static_cast<std::size_t>(bytes));
    std::size_t next = 0;
    double pushed = 0;
    // One packet waits at any time: Push is not what is measured here, but it is cheap.
    const double packetsPerRead = 0.01 / (stream.streamType == StreamType::AmrNb ? 0.02
                                          : stream.streamType == StreamType::Aac ? 1024.0 / stream.rate
                                                                                 : 0.08);
    double due = 1;
    const auto step = [&] {
        due += packetsPerRead;
        for (; pushed < std::floor(due); ++pushed) {
            device.Push(packets[next], true);
            next = (next + 1) % packets.size();
        }
        benchmark::DoNotOptimize(device.readData(pcm.data(), bytes));
    };
    for (int i = 0; i < 200; ++i) {
        step(); // the decoder comes into being, pools fill
    }
    const double before = pushed;
    const auto news = AllocationCounter::news();
    const auto mallocs = AllocationCounter::mallocs();
    for (auto _ : state) {
        step();
    }
    const double count = std::max(pushed - before, 1.0);
    state.counters["news/packet"] = static_cast<double>(AllocationCounter::news() - news) / count;
    state.counters["mallocs/packet"] = static_cast<double>(AllocationCounter::mallocs() - mallocs) / count;
    state.counters["real-time share %"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * 0.01 / 100,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    const Stream streams[] = {
        {StreamType::G711MuLaw, 8000, g711Packets()},
        {StreamType::G711ALaw, 8000, g711Packets()},
        {1024, 16000, recorded("aac/mono16k.rec")},
        {StreamType::AmrNb, 8000, recorded("amr/amr_mode7.rec")},
    };
    const char* names[] = {"mu-law", "A-law", "AAC", "AMR"};
    for (std::size_t i = 0; i < 4; ++i) {
        const Stream& stream = streams[i];
        const auto add = [&](const char* output, int format, int rate, int channels) {
            benchmark::RegisterBenchmark((std::string("readData/") + names[i] + output).c_str(),
                                         [&stream, format, rate, channels](benchmark::State& state) {
                                             readTenMilliseconds(state, stream, format, rate, channels);
                                         });
        };
        add(" as it is", 1, static_cast<int>(stream.rate), 1);
        add(" to 48000", 1, 48000, 1);
        add(" to 48000 stereo float", 3, 48000, 2);
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
