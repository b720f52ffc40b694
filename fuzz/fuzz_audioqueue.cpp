// Any AudioReceived events, through the plug-in to media packets, and those through the queue to PCM, as fast
// as they come: without an output. fuzz_audioreceived has one.

#include "fuzz/AudioEvent.h"
#include "protocol/Words.h"
#include "src/PluginVoiceDesk.h"
#include "src/playback/AudioDevice.h"

extern "C" {
#include <libavutil/log.h>
}

namespace {

constexpr int maxPackets = 8;

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
    QList<QVariant> targets{QVariantMap{{Vocabulary::talkToken, QStringLiteral("t")}}};
    plugin.setTalkTargetList(targets);
    FuzzedDataProvider input(data, size);
    const FuzzedStream stream = FuzzedStream::from(input);
    SwrConverter converter;
    const int format = input.ConsumeIntegralInRange<int>(0, 3);
    const int rate = input.PickValueInArray({8000, 16000, 44100, 48000});
    const int channels = input.ConsumeIntegralInRange<int>(1, 3);
    if (converter.Setup(format, rate, channels, 1, static_cast<int>(stream.rate),
                        static_cast<std::uint8_t>(stream.channels)) < 0) {
        return 0;
    }
    std::unique_ptr<Device> device;
    for (int packets = 0; packets < maxPackets && input.remaining_bytes() > 0; ++packets) {
        received.reset();
        plugin.EventProcessor(Vocabulary::AudioReceived, 0, 0, 0,
                              audioEvent(input, stream, QStringLiteral("t")), QString());
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
