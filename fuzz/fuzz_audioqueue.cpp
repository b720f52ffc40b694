// Any AudioReceived event, through the plug-in to a media packet, and that through the queue to PCM.

#include "AudioDevice.h"
#include "PluginVoiceDesk.h"

#include <fuzzer/FuzzedDataProvider.h>

extern "C" {
#include <libavutil/log.h>
}

namespace {

MediaPacketPtr received; // what the renderer got last

struct Device : AudioDevice
{
    using AudioDevice::AudioDevice;
    using AudioDevice::readData;
};

} // namespace

// In the place of the renderer that needs a sound output: keeps the packet.
class AudioOutput
{
};
AudioRenderer::AudioRenderer() = default;
AudioRenderer::~AudioRenderer() = default;
void AudioRenderer::SetAudioOn(bool /*on*/) {}
void AudioRenderer::SetVolume(double /*volume*/) {}
void AudioRenderer::Play(const boost::intrusive_ptr<_TMediaDataPacketInfoV3>& packet, bool /*dropWhenFull*/)
{
    received = packet;
}

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/)
{
    av_log_set_level(AV_LOG_QUIET);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static PluginVoiceDesk plugin;
    static bool talking = false;
    if (!talking) {
        QList<QVariant> targets{QVariantMap{{QStringLiteral("talkToken"), QStringLiteral("t")}}};
        plugin.setTalkTargetList(targets);
        talking = true;
    }
    FuzzedDataProvider input(data, size);
    SwrConverter converter;
    const int format = input.ConsumeIntegralInRange<int>(0, 3);
    const int rate = input.PickValueInArray({8000, 16000, 44100, 48000});
    const int channels = input.ConsumeIntegralInRange<int>(1, 3);
    const auto inRate = input.PickValueInArray<std::uint32_t>({8000, 16000, 48000, 11025, 1, 0});
    const int inChannels = input.ConsumeIntegralInRange<int>(0, 9);
    if (converter.Setup(format, rate, channels, 1, static_cast<int>(inRate), inChannels) < 0) {
        return 0;
    }
    std::unique_ptr<Device> device;
    for (int packets = 0; packets < 8 && input.remaining_bytes() > 0; ++packets) {
        const auto streamType =
            input.PickValueInArray<std::uint32_t>({256, 512, 1024, 2048, 4096, 8192, 16384, 32768, 0});
        const bool wild = input.ConsumeProbability<float>() < 0.1F;
        const auto offset =
            wild ? input.ConsumeIntegral<std::uint32_t>() : input.ConsumeIntegralInRange(0U, 40U);
        const auto frames = input.ConsumeIntegralInRange(0U, 4U);
        const std::string bytes = input.ConsumeRandomLengthString(700);
        const auto length =
            wild ? input.ConsumeIntegral<std::uint32_t>()
                 : static_cast<std::uint32_t>(std::max<std::size_t>(bytes.size(), offset)) - offset;
        const bool text = input.ConsumeProbability<float>() < 0.1F;
        const QByteArray raw = QByteArray::fromStdString(bytes);
        received.reset();
        plugin.EventProcessor(
            QStringLiteral("AudioReceived"), 0, 0, 0,
            QVariantMap{{QStringLiteral("AudioReceived"),
                         QVariantMap{
                             {QStringLiteral("Token"), QStringLiteral("t")},
                             {QStringLiteral("BitstreamSize"), length},
                             {QStringLiteral("Offset"), offset},
                             {QStringLiteral("AudioData"), QString::fromLatin1(text ? raw : raw.toBase64())},
                             {QStringLiteral("StreamType"), streamType},
                             {QStringLiteral("AudioSamplingFreq"), inRate},
                             {QStringLiteral("AudioChannelNum"), static_cast<uint>(inChannels)},
                             {QStringLiteral("FrameNumber"), frames},
                         }}},
            QString());
        if (!received) {
            continue;
        }
        if (!device) {
            device = std::make_unique<Device>(std::move(converter), received.get());
        }
        device->Push(received, true);
        char pcm[4000];
        device->readData(pcm, sizeof pcm);
    }
    received.reset();
    return 0;
}
