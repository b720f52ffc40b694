#include "tests/support/FakeFrameSmith.h"

#include <QMap>
#include <QStringList>

#include <algorithm>
#include <cstring>
#include <mutex>
#include <thread>

namespace FakeFrameSmith {

namespace {

struct State
{
    std::vector<Call> calls;
    QMap<QString, std::int32_t> failures;
    std::function<void()> initialHook;
    FrameSmithCaptureOptions captureOptions{};
    QByteArray pcm;
    std::uintptr_t nextHandle = 0x1000;
    bool withholdsCaptureChannel = false;
};

State& state()
{
    static State instance;
    return instance;
}

std::int32_t record(Call call)
{
    const std::int32_t code = state().failures.value(call.function, 0);
    state().calls.push_back(std::move(call));
    return code;
}

template<typename Options>
QByteArray bytesOf(const Options* options)
{
    return QByteArray(reinterpret_cast<const char*>(options), sizeof *options);
}

void* newHandle()
{
    return reinterpret_cast<void*>(++state().nextHandle);
}

} // namespace

void reset()
{
    state() = State();
}

std::vector<Call> calls()
{
    return state().calls;
}

QStringList functions()
{
    QStringList names;
    for (const Call& call : state().calls) {
        names.append(call.function);
    }
    return names;
}

void clearCalls()
{
    state().calls.clear();
}

void fail(const QString& function, std::int32_t code)
{
    state().failures[function] = code;
}

void withholdCaptureChannel()
{
    state().withholdsCaptureChannel = true;
}

void setInitialHook(std::function<void()> hook)
{
    state().initialHook = std::move(hook);
}

FrameSmithCaptureOptions captureOptions()
{
    return state().captureOptions;
}

Delivery deliver(void* context, TMediaDataPacketInfo* record, DWORD delay)
{
    Delivery delivery{};
    const FrameSmithPacketCallback callback = state().captureOptions.packetCallback;
    std::thread thread([&] {
        const auto start = std::chrono::steady_clock::now();
        delivery.result = callback(context, record, delay);
        delivery.duration = std::chrono::steady_clock::now() - start;
    });
    thread.join();
    return delivery;
}

Delivery deliver(const QByteArray& packet, std::uint32_t offset, std::uint32_t streamType, DWORD delay)
{
    QByteArray bytes = packet;
    bytes.detach();
    TMediaDataPacketInfo record{};
    record.Buffer = reinterpret_cast<std::uint8_t*>(bytes.data());
    record.Offset = offset;
    record.BitstreamSize = static_cast<std::uint32_t>(bytes.size()) - offset;
    record.StreamType = streamType;
    return deliver(state().captureOptions.context, &record, delay);
}

QByteArray lastPcm()
{
    return state().pcm;
}

} // namespace FakeFrameSmith

using FakeFrameSmith::bytesOf;
using FakeFrameSmith::newHandle;
using FakeFrameSmith::record;
using FakeFrameSmith::state;

std::int32_t FrameSmith_Initial(FrameSmithHandle* library, std::uint32_t reserved, std::uint32_t version)
{
    if (state().initialHook) {
        state().initialHook();
    }
    const std::int32_t code = record({"FrameSmith_Initial", {}, {reserved, version}, nullptr});
    if (code == 0) {
        *library = newHandle();
    }
    return code;
}

std::int32_t FrameSmith_Release(FrameSmithHandle* library)
{
    const std::int32_t code = record({"FrameSmith_Release", {}, {}, *library});
    *library = nullptr;
    return code;
}

std::int32_t FrameSmith_CreateChannel(FrameSmithHandle library, FrameSmithHandle* channel,
                                      const FrameSmithChannelOptions* options)
{
    const std::int32_t code = record({"FrameSmith_CreateChannel", bytesOf(options), {}, library});
    if (code == 0) {
        *channel = newHandle();
    }
    return code;
}

std::int32_t FrameSmith_DeleteChannel(FrameSmithHandle* channel)
{
    const std::int32_t code = record({"FrameSmith_DeleteChannel", {}, {}, *channel});
    *channel = nullptr;
    return code;
}

std::int32_t FrameSmith_CreateAudioCaptureChannel(FrameSmithHandle library, FrameSmithHandle* channel,
                                                  const FrameSmithCaptureOptions* options)
{
    const std::int32_t code = record({"FrameSmith_CreateAudioCaptureChannel", bytesOf(options), {}, library});
    state().captureOptions = *options;
    if (code == 0 && !state().withholdsCaptureChannel) {
        *channel = newHandle();
    }
    return code;
}

std::int32_t FrameSmith_DeleteAudioCaptureChannel(FrameSmithHandle* channel)
{
    const std::int32_t code = record({"FrameSmith_DeleteAudioCaptureChannel", {}, {}, *channel});
    *channel = nullptr;
    return code;
}

std::int32_t FrameSmith_StartAudioCapture(FrameSmithHandle channel)
{
    return record({"FrameSmith_StartAudioCapture", {}, {}, channel});
}

std::int32_t FrameSmith_StopAudioCapture(FrameSmithHandle channel)
{
    return record({"FrameSmith_StopAudioCapture", {}, {}, channel});
}

std::int32_t FrameSmith_UpdateChannelSettings(FrameSmithHandle channel, std::uint32_t setting,
                                              std::int32_t value, std::uint32_t reserved)
{
    return record({"FrameSmith_UpdateChannelSettings", {}, {setting, value, reserved}, channel});
}

std::int32_t FrameSmith_SetAudioCaptureChannelOption(FrameSmithHandle channel, std::uint32_t option,
                                                     std::int32_t value, std::uint32_t reserved)
{
    return record({"FrameSmith_SetAudioCaptureChannelOption", {}, {option, value, reserved}, channel});
}

std::int32_t FrameSmith_MakeAudioPacket(FrameSmithHandle channel, const void* pcm, std::uint32_t pcmSize,
                                        std::uint32_t bufferSize, std::uint32_t* reportedSize,
                                        TMediaDataPacketInfo* packet)
{
    const std::int32_t code = record({"FrameSmith_MakeAudioPacket", {}, {pcmSize, bufferSize}, channel});
    state().pcm = QByteArray(static_cast<const char*>(pcm), static_cast<int>(pcmSize));
    if (code == 0) {
        std::memset(packet->Buffer, 0x5A, std::min<std::size_t>(bufferSize, 660));
        packet->Offset = 20;
        packet->BitstreamSize = pcmSize / 2;
        *reportedSize = pcmSize;
    }
    return code;
}
