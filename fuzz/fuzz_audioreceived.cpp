// Any AudioReceived events through the plug-in to a real output of Qt's at a private sound server.

#include "fuzz/AudioEvent.h"
#include "fuzz/PrivateSound.h"
#include "protocol/Words.h"
#include "src/MediaPacket.h"
#include "src/PluginVoiceDesk.h"
#include "src/playback/AudioDevice.h"
#include "src/playback/DecoderSlot.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

#include <atomic>
#include <cstdlib>

extern "C" {
#include <libavutil/log.h>
}

namespace {

constexpr int maxStreams = 3; // each opens an output
constexpr int maxPackets = 4; // of a stream
constexpr int maxWait = 60;   // ms, for the packets of a stream to be played

int queued = 0;              // packets that an output may ask for
std::atomic<int> decoded{0}; // packets that it has asked for

} // namespace

// The linker leads the calls of AudioDevice::Push and DecoderSlot::Decode through here.
extern "C" {

void __real__ZN11AudioDevice4PushERKN5boost13intrusive_ptrI23_TMediaDataPacketInfoV3EEb(AudioDevice*,
                                                                                        const MediaPacketPtr&,
                                                                                        bool);
void __wrap__ZN11AudioDevice4PushERKN5boost13intrusive_ptrI23_TMediaDataPacketInfoV3EEb(
    AudioDevice* device, const MediaPacketPtr& packet, bool dropWhenFull)
{
    queued += device->isOpen() ? 1 : 0;
    __real__ZN11AudioDevice4PushERKN5boost13intrusive_ptrI23_TMediaDataPacketInfoV3EEb(device, packet,
                                                                                       dropWhenFull);
}

std::int32_t __real__ZN11DecoderSlot6DecodeEPhPjRK23_TMediaDataPacketInfoV3(DecoderSlot*, std::uint8_t*,
                                                                            std::uint32_t*,
                                                                            const _TMediaDataPacketInfoV3&);
std::int32_t __wrap__ZN11DecoderSlot6DecodeEPhPjRK23_TMediaDataPacketInfoV3(
    DecoderSlot* slot, std::uint8_t* pcm, std::uint32_t* size, const _TMediaDataPacketInfoV3& packet)
{
    const std::uint32_t room = *size;
    const std::int32_t result =
        __real__ZN11DecoderSlot6DecodeEPhPjRK23_TMediaDataPacketInfoV3(slot, pcm, size, packet);
    if (*size > room) {
        std::abort();
    }
    ++decoded;
    return result;
}

} // extern "C"

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/)
{
    av_log_set_level(AV_LOG_QUIET);
    if (!PrivateSound::start()) {
        std::exit(EXIT_FAILURE);
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static int argc = 1;
    static char name[] = "fuzz";
    static char* argv[] = {name, nullptr};
    static const QCoreApplication application(argc, argv);

    FuzzedDataProvider input(data, size);
    PluginVoiceDesk plugin;
    QList<QVariant> targets{QVariantMap{{Vocabulary::talkToken, QStringLiteral("t")}}};
    plugin.setTalkTargetList(targets);
    queued = 0;
    decoded = 0;
    for (int streams = 0; streams < maxStreams && input.remaining_bytes() > 0; ++streams) {
        const FuzzedStream stream = FuzzedStream::from(input);
        const int packets = input.ConsumeIntegralInRange(1, maxPackets);
        for (int i = 0; i < packets; ++i) {
            plugin.EventProcessor(Vocabulary::AudioReceived, 0, 0, 0,
                                  audioEvent(input, stream, QStringLiteral("t")), QString());
        }
        // A packet may also be dropped in the queue, so the wait has an end.
        QElapsedTimer clock;
        clock.start();
        while (decoded < queued && clock.elapsed() < maxWait) {
            QThread::msleep(1);
        }
    }
    QCoreApplication::processEvents();
    static const bool loaded = (PrivateSound::endWithoutDestructors(), true);
    static_cast<void>(loaded);
    return 0;
}
