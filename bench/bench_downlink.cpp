// The cost of one received packet from EventProcessor to AudioDevice::Push, on an output device that stays
// open.

#include "protocol/Words.h"
#include "src/PluginVoiceDesk.h"
#include "src/vocabulary/StreamType.h"
#include "tests/support/SystemOverrides.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

namespace {

void receivedPacket(benchmark::State& state)
{
    QAudioFormat format;
    format.setSampleRate(8000);
    format.setChannelCount(1);
    format.setSampleSize(16);
    format.setSampleType(QAudioFormat::SignedInt);
    format.setByteOrder(QAudioFormat::LittleEndian);
    format.setCodec(QStringLiteral("audio/pcm"));
    SystemOverrides::setOutputFormats({format});

    PluginVoiceDesk plugin;
    QList<QVariant> targets;
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        targets.append(QVariantMap{{Vocabulary::talkToken, QStringLiteral("%1").arg(i, 32, 16)}});
    }
    plugin.setTalkTargetList(targets);
    const QVariant event =
        QVariantMap{{Vocabulary::AudioReceived,
                     QVariantMap{
                         {Words::Token, QStringLiteral("%1").arg(state.range(0) - 1, 32, 16)},
                         {Words::BitstreamSize, 640U},
                         {Words::Offset, 20U},
                         {Words::AudioData, QString::fromLatin1(QByteArray(660, 'p').toBase64())},
                         {Words::StreamType, StreamType::G711MuLaw},
                         {Words::AudioSamplingFreq, 8000U},
                         {Words::AudioChannelNum, 1U},
                         {Words::FrameNumber, 1U},
                     }}};
    for (auto _ : state) {
        plugin.EventProcessor(Vocabulary::AudioReceived, 0, 0, 0, event, QString());
    }
    state.SetComplexityN(state.range(0));
    targets.clear();
    plugin.setTalkTargetList(targets);
}

} // namespace

BENCHMARK(receivedPacket)->Arg(1)->Arg(10)->Arg(100)->Complexity(benchmark::oN);

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
