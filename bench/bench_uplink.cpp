// The cost of one captured packet from handleAudioCapture to SendCommand, by the number of targets.

#include "platform/FrameworkWrapperBase.h"
#include "protocol/Words.h"
#include "src/PluginVoiceDesk.h"
#include "src/vocabulary/StreamType.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

namespace {

class CountingFramework : public FrameworkWrapperBase
{
public:
    virtual ~CountingFramework() = default;
    void reservedOperation() override {}
    bool SendCommand(void*, const QString&, const QString&, const QVariant& param, void*, bool,
                     const QString&) override
    {
        benchmark::DoNotOptimize(param);
        ++commands;
        return true;
    }

    int commands = 0;
};

/** Gives the benchmark the slot that the capture signal is connected to. */
class Plugin : public PluginVoiceDesk
{
public:
    using PluginVoiceDesk::handleAudioCapture;
};

void capturedPacket(benchmark::State& state)
{
    CountingFramework framework;
    Plugin plugin;
    plugin.InitialPluginBase(nullptr, nullptr, &framework);
    QList<QVariant> targets;
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        targets.append(QVariantMap{{Vocabulary::camId, QStringLiteral("camera-%1").arg(i)},
                                   {Vocabulary::talkToken, QStringLiteral("%1").arg(i, 32, 16)},
                                   {Vocabulary::relayPath, QStringLiteral("relay-7")}});
    }
    plugin.setTalkTargetList(targets);
    const QByteArray packet(660, 'p');
    for (auto _ : state) {
        plugin.handleAudioCapture(StreamType::G711MuLaw, packet);
    }
    if (framework.commands != state.iterations()) {
        state.SkipWithError("a packet was not sent");
    }
    state.SetComplexityN(state.range(0));
    targets.clear();
    plugin.setTalkTargetList(targets);
}

} // namespace

BENCHMARK(capturedPacket)->Arg(1)->Arg(10)->Arg(100)->Arg(1000)->Complexity(benchmark::oN);

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
