// A group of simulated speakers that play one sound: processor time a speaker and step of 20 ms, of all
// threads, beside the least that keeps the same sound in as many files, a copy into a buffer and fwrite; both
// in turns in one run. Steps are late when the next one is due already.

#include "bench/AllocationCounter.h"
#include "server/devices/simulated/SpeakerMixer.h"
#include "system/OpenFiles.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QTemporaryDir>

#include <cstdio>
#include <cstring>
#include <ctime>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int steps = 150; // three seconds
constexpr std::size_t stepSamples = SpeakerMixer::sampleRate * SpeakerMixer::stepTime / 1000;
constexpr std::size_t bufferSize = 65536; // bytes

double processorMicroseconds()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
}

struct Played
{
    double microseconds = 0; ///< A speaker and step, without the first second: there files are opened.
    double allocations = 0;  ///< A speaker and step, without the first second.
    double openMs = 0;       ///< How late the step after the first one was.
    double worstMs = 0;      ///< How late the latest step was, without the first second.
    int late = 0;            ///< Steps, without the first second.
};

/** Plays three seconds on so many speakers. */
Played play(int speakers)
{
    constexpr int warmUp = 50;
    QTemporaryDir folder;
    SpeakerMixer mixer(folder.path(), false, std::make_shared<SimulatedRecordings>());
    QList<int> all;
    for (int id = 1; id <= speakers; ++id) {
        all.append(id);
    }
    Played played;
    int step = 0;
    Clock::time_point begin;
    double cpu = 0;
    std::uint64_t allocations = 0;
    mixer.addSource(all, [&](std::size_t count, std::vector<std::int16_t>& out) {
        if (step == 0) {
            begin = Clock::now();
        }
        const std::chrono::duration<double, std::milli> since = Clock::now() - begin;
        const double lateMs = since.count() - step * SpeakerMixer::stepTime;
        played.openMs = step == 1 ? lateMs : played.openMs;
        if (step == warmUp) {
            cpu = processorMicroseconds();
            allocations = AllocationCounter::news() + AllocationCounter::mallocs();
        }
        if (step > warmUp) {
            played.worstMs = std::max(played.worstMs, lateMs);
            played.late += lateMs > SpeakerMixer::stepTime ? 1 : 0;
        }
        out.insert(out.end(), count, static_cast<std::int16_t>(step));
        if (++step == steps) {
            const double blocks = static_cast<double>(speakers) * (steps - 1 - warmUp);
            played.microseconds = (processorMicroseconds() - cpu) / blocks;
            played.allocations =
                static_cast<double>(AllocationCounter::news() + AllocationCounter::mallocs() - allocations) /
                blocks;
            return false;
        }
        return true;
    });
    bool ended = false;
    QObject::connect(&mixer, &SpeakerMixer::sourceEnded, [&ended] { ended = true; });
    while (!ended) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return played;
}

/** The least that keeps the same sound: microseconds a speaker and step. */
double keep(int speakers)
{
    QTemporaryDir folder;
    struct File
    {
        std::FILE* file;
        std::vector<char> buffer;
    };
    std::vector<File> files;
    for (int id = 1; id <= speakers; ++id) {
        const QByteArray path = folder.filePath(QString::number(id)).toLocal8Bit();
        files.push_back({std::fopen(path.constData(), "wb"), std::vector<char>(bufferSize)});
        std::setvbuf(files.back().file, files.back().buffer.data(), _IOFBF, bufferSize);
    }
    std::vector<std::int16_t> sound(stepSamples, 1);
    std::vector<std::int16_t> block(stepSamples);
    constexpr int measured = 100;
    const double cpu = processorMicroseconds();
    for (int step = 0; step < measured; ++step) {
        for (const File& file : files) {
            std::memcpy(block.data(), sound.data(), block.size() * sizeof(block[0]));
            std::fwrite(block.data(), sizeof(block[0]), block.size(), file.file);
        }
    }
    for (const File& file : files) {
        std::fclose(file.file);
    }
    return (processorMicroseconds() - cpu) / (static_cast<double>(speakers) * measured);
}

void BM_Speakers(benchmark::State& state)
{
    const auto speakers = static_cast<int>(state.range(0));
    Played sum;
    double least = 0;
    for (auto _ : state) {
        least += keep(speakers);
        const Played played = play(speakers);
        sum.microseconds += played.microseconds;
        sum.allocations += played.allocations;
        sum.late += played.late;
        sum.openMs = std::max(sum.openMs, played.openMs);
        sum.worstMs = std::max(sum.worstMs, played.worstMs);
        state.SetIterationTime(played.microseconds * speakers / 1e6);
    }
    const auto runs = static_cast<double>(state.iterations());
    state.counters["us/speaker"] = sum.microseconds / runs;
    state.counters["least_us"] = least / runs;
    state.counters["to_least"] = sum.microseconds / least;
    state.counters["core_percent"] = sum.microseconds / runs * speakers / (SpeakerMixer::stepTime * 10);
    state.counters["allocations"] = sum.allocations / runs;
    state.counters["late_steps"] = sum.late;
    state.counters["worst_ms"] = sum.worstMs;
    state.counters["open_ms"] = sum.openMs;
}

BENCHMARK(BM_Speakers)->Arg(1000)->Arg(5000)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(2);

} // namespace

int main(int argc, char** argv)
{
    OpenFiles::raiseLimit(); // each speaker has one
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
